// The service side of the SOM message format: reading one request from a
// connection and writing one reply.
#ifndef QEL_TOOLS_SOMD_PROTOCOL_H
#define QEL_TOOLS_SOMD_PROTOCOL_H

#include <cstdint>
#include <string>

#include "fd_io.h"

namespace somd {

struct Request {
    std::string className;
    std::string method;
    std::string body;
};

enum class ReadStatus {
    kOk,
    kClosed,     // the peer went away or stalled before a whole request came
    kMalformed,  // the header names a class and method but breaks the format
    kGarbage,    // not a request at all
};

// Limits on what one request may be.
constexpr std::size_t kMaxHeader = 4096;
constexpr std::size_t kMaxBody = 4 * 1024 * 1024;

// Reads one request; waits at most `timeoutMs` for each piece.
ReadStatus ReadRequest(int fd, int timeoutMs, Request& request);

// Parses a whole request held in memory (the same rules; used by tests and
// fuzzing).
ReadStatus ParseRequest(const std::string& bytes, Request& request);

// The reply: the request's class and method, `result` in hexadecimal.
std::string FormatReply(const Request& request, uint32_t result, const std::string& body);

// Sends all of `data` to a client; false when the client has gone.
inline bool WriteAll(int fd, const std::string& data) {
    return qel::WriteAll(fd, data, qel::Descriptor::kSocket);
}

}  // namespace somd

#endif  // QEL_TOOLS_SOMD_PROTOCOL_H
