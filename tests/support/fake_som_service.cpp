#include "fake_som_service.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <stdexcept>

namespace qel_test {
namespace {

const int kIoWaitMs = 10000;

bool WaitReadable(int fd, int ms) {
    struct pollfd p = {fd, POLLIN, 0};
    return poll(&p, 1, ms) > 0;
}

// Reads exactly `size` bytes; false when the peer closes or stalls.
bool ReadExactly(int fd, std::string& out, std::size_t size) {
    char chunk[65536];
    while (size > 0) {
        if (!WaitReadable(fd, kIoWaitMs))
            return false;
        ssize_t n = read(fd, chunk, size < sizeof chunk ? size : sizeof chunk);
        if (n <= 0)
            return false;
        out.append(chunk, static_cast<std::size_t>(n));
        size -= static_cast<std::size_t>(n);
    }
    return true;
}

void WriteAll(int fd, const std::string& data) {
    std::size_t done = 0;
    while (done < data.size()) {
        ssize_t n = send(fd, data.data() + done, data.size() - done, MSG_NOSIGNAL);
        if (n <= 0)
            return;
        done += static_cast<std::size_t>(n);
    }
}

// Parses "<len 8><magic 8><class>/<method><result 8><bodylen 8>".
bool ReadRequest(int fd, Request& request) {
    if (!ReadExactly(fd, request.bytes, 8))
        return false;
    long headerLength = std::strtol(request.bytes.c_str(), nullptr, 10);
    if (headerLength < 33 || headerLength > 4096)
        return false;
    if (!ReadExactly(fd, request.bytes, static_cast<std::size_t>(headerLength) - 8))
        return false;
    std::string names = request.bytes.substr(16, static_cast<std::size_t>(headerLength) - 32);
    std::string::size_type slash = names.find('/');
    request.className = names.substr(0, slash);
    request.method = slash == std::string::npos ? std::string() : names.substr(slash + 1);
    long bodyLength = std::strtol(
        request.bytes.substr(static_cast<std::size_t>(headerLength) - 8).c_str(), nullptr, 10);
    std::string body;
    if (bodyLength > 0 && !ReadExactly(fd, body, static_cast<std::size_t>(bodyLength))) {
        request.bytes += body;
        request.body = body;
        return false;
    }
    request.bytes += body;
    request.body = body;
    return true;
}

}  // namespace

Action Action::Answer(std::string body, uint32_t result) {
    char field[16];
    std::snprintf(field, sizeof field, "%08x", result);
    return AnswerWithField(field, std::move(body));
}

Action Action::AnswerWithField(std::string field, std::string body) {
    Action action;
    action.kind = kAnswer;
    action.resultField = std::move(field);
    action.body = std::move(body);
    return action;
}

Action Action::Raw(std::string bytes) {
    Action action;
    action.kind = kRaw;
    action.raw = std::move(bytes);
    return action;
}

Action Action::Fault(Kind kind) {
    Action action;
    action.kind = kind;
    return action;
}

std::string FakeSomService::ReplyText(const std::string& className, const std::string& method,
                                      const std::string& resultField, const std::string& body) {
    char head[64];
    std::snprintf(head, sizeof head, "%08d%08lx",
                  static_cast<int>(33 + className.size() + method.size()), 0xCAFEFEEDUL);
    char length[16];
    std::snprintf(length, sizeof length, "%08d", static_cast<int>(body.size()));
    return std::string(head) + className + "/" + method + resultField + length + body;
}

FakeSomService::FakeSomService(const TempSysroot& root, int timeoutSeconds)
    : socketPath_(root.root() + "/som.sock") {
    root.WriteFile("/opt/velmora/qel/som/socket.conf",
                   "# test service\nsocket = " + socketPath_ +
                       "\ntimeout = " + std::to_string(timeoutSeconds) + "\n");
    listenFd_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    struct sockaddr_un addr;
    std::memset(&addr, 0, sizeof addr);
    addr.sun_family = AF_UNIX;
    std::strncpy(addr.sun_path, socketPath_.c_str(), sizeof addr.sun_path - 1);
    unlink(socketPath_.c_str());
    if (listenFd_ < 0 || bind(listenFd_, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0 ||
        listen(listenFd_, 64) != 0 || pipe2(wakePipe_, O_CLOEXEC) != 0) {
        throw std::runtime_error("fake service cannot listen");
    }
    thread_ = std::thread([this] { Serve(); });
}

FakeSomService::~FakeSomService() {
    Stop();
    if (wakePipe_[0] >= 0)
        close(wakePipe_[0]);
    if (wakePipe_[1] >= 0)
        close(wakePipe_[1]);
}

void FakeSomService::Stop() {
    if (thread_.joinable()) {
        (void)!write(wakePipe_[1], "x", 1);
        thread_.join();
    }
    if (listenFd_ >= 0) {
        close(listenFd_);
        listenFd_ = -1;
        unlink(socketPath_.c_str());
    }
}

void FakeSomService::WaitForIdle() const {
    for (int i = 0; i < 1000 && closed_.load() != accepted_.load(); ++i)
        usleep(10000);
}

void FakeSomService::Push(Action action) {
    std::lock_guard<std::mutex> lock(mutex_);
    script_.push_back(std::move(action));
}

std::vector<Request> FakeSomService::Requests() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return requests_;
}

Request FakeSomService::LastRequest() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return requests_.empty() ? Request() : requests_.back();
}

std::size_t FakeSomService::RequestCount() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return requests_.size();
}

void FakeSomService::Serve() {
    for (;;) {
        struct pollfd fds[2] = {{listenFd_, POLLIN, 0}, {wakePipe_[0], POLLIN, 0}};
        if (poll(fds, 2, -1) < 0)
            continue;
        if (fds[1].revents != 0)
            return;
        int fd = accept4(listenFd_, nullptr, nullptr, SOCK_CLOEXEC);
        if (fd < 0)
            continue;
        ++accepted_;
        Handle(fd);
        close(fd);
        ++closed_;
    }
}

void FakeSomService::Handle(int fd) {
    Action action;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (!script_.empty()) {
            action = script_.front();
            script_.pop_front();
        }
    }
    if (action.kind == Action::kCloseBeforeRequest)
        return;
    Request request;
    bool whole = ReadRequest(fd, request);
    {
        std::lock_guard<std::mutex> lock(mutex_);
        requests_.push_back(request);
    }
    if (!whole)
        return;
    const std::string reply =
        ReplyText(request.className, request.method, action.resultField, action.body);
    switch (action.kind) {
        case Action::kAnswer:
            if (action.declareBodyLength) {
                WriteAll(fd, reply);
            } else {
                std::string header = reply.substr(0, reply.size() - action.body.size());
                header.replace(header.size() - 8, 8, "????????");
                WriteAll(fd, header + action.body);
            }
            break;
        case Action::kRaw:
            WriteAll(fd, action.raw);
            break;
        case Action::kCloseAfterHalfHeader:
            WriteAll(fd, reply.substr(0, (reply.size() - action.body.size()) / 2));
            break;
        case Action::kNeverAnswer: {
            // Hold the connection until the client closes it or the test ends.
            struct pollfd fds[2] = {{fd, POLLIN, 0}, {wakePipe_[0], POLLIN, 0}};
            while (poll(fds, 2, -1) > 0) {
                if (fds[1].revents != 0)
                    return;
                char byte;
                if (read(fd, &byte, 1) <= 0)
                    return;
            }
            break;
        }
        case Action::kCloseWithoutAnswer:
        case Action::kCloseBeforeRequest:
            break;
    }
}

}  // namespace qel_test
