#include "protocol.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "common/protocol.h"

namespace somd {
namespace {

namespace wire = qel::protocol;
const std::size_t kField = wire::kFieldWidth;
const std::size_t kFixed = wire::kHeaderFixedLength;

bool AllDigits(const std::string& text) {
    if (text.empty())
        return false;
    for (char c : text) {
        if (c < '0' || c > '9')
            return false;
    }
    return true;
}

// Reads exactly `size` more bytes into `out`.
bool ReadExactly(int fd, int timeoutMs, std::size_t size, std::string& out) {
    char chunk[65536];
    while (size > 0) {
        struct pollfd p = {fd, POLLIN, 0};
        int ready = poll(&p, 1, timeoutMs);
        if (ready < 0 && errno == EINTR)
            continue;
        if (ready <= 0)
            return false;
        ssize_t n = read(fd, chunk, size < sizeof chunk ? size : sizeof chunk);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        out.append(chunk, static_cast<std::size_t>(n));
        size -= static_cast<std::size_t>(n);
    }
    return true;
}

// Checks the header in `header` (all of it) and fills class and method.
// Returns the body length, or -1 (garbage) / -2 (malformed).
long CheckHeader(const std::string& header, Request& request) {
    if (std::memcmp(header.data() + kField, wire::kMagicText, kField) != 0)
        return -1;
    const std::string names = header.substr(2 * kField, header.size() - kFixed + 1);
    std::string::size_type slash = names.find(wire::kClassMethodSeparator);
    if (slash == std::string::npos)
        return -1;
    request.className = names.substr(0, slash);
    request.method = names.substr(slash + 1);
    const std::string lengthField = header.substr(header.size() - kField);
    if (!AllDigits(lengthField))
        return -2;
    long length = std::strtol(lengthField.c_str(), nullptr, 10);
    if (static_cast<std::size_t>(length) > kMaxBody)
        return -2;
    return length;
}

std::size_t HeaderLength(const std::string& field) {
    if (!AllDigits(field))
        return 0;
    std::size_t length = std::strtoul(field.c_str(), nullptr, 10);
    return (length < kFixed + 1 || length > kMaxHeader) ? 0 : length;
}

}  // namespace

ReadStatus ReadRequest(int fd, int timeoutMs, Request& request) {
    std::string header;
    if (!ReadExactly(fd, timeoutMs, kField, header))
        return ReadStatus::kClosed;
    const std::size_t headerLength = HeaderLength(header);
    if (headerLength == 0)
        return ReadStatus::kGarbage;
    if (!ReadExactly(fd, timeoutMs, headerLength - kField, header))
        return ReadStatus::kClosed;
    long bodyLength = CheckHeader(header, request);
    if (bodyLength == -1)
        return ReadStatus::kGarbage;
    if (bodyLength == -2)
        return ReadStatus::kMalformed;
    if (!ReadExactly(fd, timeoutMs, static_cast<std::size_t>(bodyLength), request.body)) {
        return ReadStatus::kClosed;
    }
    return ReadStatus::kOk;
}

ReadStatus ParseRequest(const std::string& bytes, Request& request) {
    if (bytes.size() < kField)
        return ReadStatus::kClosed;
    const std::size_t headerLength = HeaderLength(bytes.substr(0, kField));
    if (headerLength == 0)
        return ReadStatus::kGarbage;
    if (bytes.size() < headerLength)
        return ReadStatus::kClosed;
    long bodyLength = CheckHeader(bytes.substr(0, headerLength), request);
    if (bodyLength == -1)
        return ReadStatus::kGarbage;
    if (bodyLength == -2)
        return ReadStatus::kMalformed;
    if (bytes.size() - headerLength < static_cast<std::size_t>(bodyLength)) {
        return ReadStatus::kClosed;
    }
    request.body = bytes.substr(headerLength, static_cast<std::size_t>(bodyLength));
    return ReadStatus::kOk;
}

std::string FormatReply(const Request& request, uint32_t result, const std::string& body) {
    return wire::ReplyHeader(request.className, request.method, result, body.size()) + body;
}

}  // namespace somd
