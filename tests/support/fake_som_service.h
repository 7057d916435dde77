// A scripted stand-in for the SOM service, on a real Unix socket inside a
// TempSysroot (it writes the socket configuration file there).
//
// Every request is recorded byte for byte. Each connection consumes the next
// scripted action; with none left the service answers result 0 and an empty
// body. Actions can also misbehave: close without answering, close after half
// a header, never answer, or answer more than a receive buffer holds.
#ifndef QEL_TESTS_SUPPORT_FAKE_SOM_SERVICE_H
#define QEL_TESTS_SUPPORT_FAKE_SOM_SERVICE_H

#include <atomic>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "temp_sysroot.h"

namespace qel_test {

struct Request {
    std::string bytes;  // the whole request as received
    std::string className;
    std::string method;
    std::string body;
};

struct Action {
    enum Kind {
        kAnswer,                // a reply with the request's class and method
        kRaw,                   // these bytes exactly, then close
        kCloseWithoutAnswer,    // read the request, close
        kCloseAfterHalfHeader,  // half of a proper reply header, then close
        kNeverAnswer,           // keep the connection until the client gives up
        kCloseBeforeRequest,    // accept and close at once
    };
    Kind kind = kAnswer;
    std::string resultField = "00000000";  // 8 characters in a reply header
    std::string body;
    std::string raw;
    bool declareBodyLength = true;  // false: a non-numeric body-length field

    // A reply with the result code in hexadecimal and `body`.
    static Action Answer(std::string body, uint32_t result = 0);
    // A reply whose result field is exactly `field` (8 characters).
    static Action AnswerWithField(std::string field, std::string body);
    static Action Raw(std::string bytes);
    static Action Fault(Kind kind);
};

class FakeSomService {
  public:
    // Listens at <root>/som.sock and writes /opt/velmora/qel/som/socket.conf.
    explicit FakeSomService(const TempSysroot& root, int timeoutSeconds = 5);
    ~FakeSomService();
    FakeSomService(const FakeSomService&) = delete;
    FakeSomService& operator=(const FakeSomService&) = delete;

    void Push(Action action);
    std::vector<Request> Requests() const;
    Request LastRequest() const;
    std::size_t RequestCount() const;

    // Waits (up to 10 s) until every accepted connection has been closed on
    // the service's side, so that descriptor counts see only the client.
    void WaitForIdle() const;

    // Stops serving and removes the socket: the service is then absent.
    void Stop();

    const std::string& socketPath() const { return socketPath_; }

    // A reply as the service writes it.
    static std::string ReplyText(const std::string& className, const std::string& method,
                                 const std::string& resultField, const std::string& body);

  private:
    void Serve();
    void Handle(int fd);

    std::string socketPath_;
    int listenFd_ = -1;
    int wakePipe_[2] = {-1, -1};
    std::thread thread_;
    mutable std::mutex mutex_;
    std::deque<Action> script_;
    std::vector<Request> requests_;
    std::atomic<int> accepted_{0};
    std::atomic<int> closed_{0};
};

}  // namespace qel_test

#endif  // QEL_TESTS_SUPPORT_FAKE_SOM_SERVICE_H
