// A scripted stand-in for the SOM service, on a real Unix socket inside a
// TempSysroot (it writes the socket configuration file there).
//
// It writes the header layout out by hand and includes none of the library's
// protocol constants, on purpose: the tests then cross-check those constants
// instead of restating them.
//
// Every request is recorded byte for byte. Each connection consumes the next
// scripted action; with none left the service answers result 0 and an empty
// body. An action can also send raw bytes and close (nothing: close without
// answering), never answer, or close before reading the request.
#ifndef QEL_TESTS_SUPPORT_FAKE_SOM_SERVICE_H
#define QEL_TESTS_SUPPORT_FAKE_SOM_SERVICE_H

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
    std::string className, method;
};

struct Action {
    enum Kind { kAnswer, kRaw, kNeverAnswer, kCloseBeforeRequest };
    Kind kind = kAnswer;
    uint32_t result = 0;
    std::string bytes;  // the body of kAnswer, everything of kRaw

    static Action Answer(std::string body, uint32_t result = 0) {
        return Action{kAnswer, result, std::move(body)};
    }
    static Action Raw(std::string bytes) { return Action{kRaw, 0, std::move(bytes)}; }
    static Action Fault(Kind kind) { return Action{kind, 0, std::string()}; }
};

class FakeSomService {
  public:
    // Listens at <root>/som.sock and writes /opt/velmora/qel/som/socket.conf.
    explicit FakeSomService(const TempSysroot& root, int timeoutSeconds = 5);
    ~FakeSomService();
    FakeSomService(const FakeSomService&) = delete;
    FakeSomService& operator=(const FakeSomService&) = delete;

    void Push(Action action);
    Request LastRequest() const;
    // Stops serving and removes the socket: the service is then absent.
    void Stop();
    const std::string& socketPath() const { return socketPath_; }

    // A reply as the service writes it: result in hexadecimal.
    static std::string ReplyText(const std::string& className, const std::string& method,
                                 uint32_t result, const std::string& body);

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
};

}  // namespace qel_test

#endif  // QEL_TESTS_SUPPORT_FAKE_SOM_SERVICE_H
