#include "fake_som_service.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <stdexcept>

namespace qel_test {
namespace {

// Reads exactly `size` more bytes into `out`; false when the peer closes or stalls.
bool ReadExactly(int fd, std::string& out, std::size_t size) {
    char chunk[65536];
    while (size > 0) {
        struct pollfd p = {fd, POLLIN, 0};
        ssize_t n = poll(&p, 1, 10000) > 0 ? read(fd, chunk, std::min(size, sizeof chunk)) : -1;
        if (n <= 0)
            return false;
        out.append(chunk, static_cast<std::size_t>(n));
        size -= static_cast<std::size_t>(n);
    }
    return true;
}

// "<header length 8><magic 8><class>/<method><result 8><body length 8><body>"
bool ReadRequest(int fd, Request& request) {
    std::string& bytes = request.bytes;
    if (!ReadExactly(fd, bytes, 8))
        return false;
    const long headerLength = std::strtol(bytes.c_str(), nullptr, 10);
    if (headerLength < 33 || headerLength > 4096 ||
        !ReadExactly(fd, bytes, static_cast<std::size_t>(headerLength) - 8))
        return false;
    const std::string names = bytes.substr(16, static_cast<std::size_t>(headerLength) - 32);
    request.className = names.substr(0, names.find('/'));
    request.method = names.substr(std::min(names.size(), request.className.size() + 1));
    const long bodyLength = std::strtol(bytes.c_str() + headerLength - 8, nullptr, 10);
    return ReadExactly(fd, bytes, static_cast<std::size_t>(std::max(0L, bodyLength)));
}

}  // namespace

std::string FakeSomService::ReplyText(const std::string& className, const std::string& method,
                                      uint32_t result, const std::string& body) {
    char head[20], tail[20];
    std::snprintf(head, sizeof head, "%08zucafefeed", 33 + className.size() + method.size());
    std::snprintf(tail, sizeof tail, "%08x%08zu", result, body.size());
    return head + className + "/" + method + tail + body;
}

FakeSomService::FakeSomService(const TempSysroot& root, int timeoutSeconds)
    : socketPath_(root.root() + "/som.sock") {
    root.WriteFile("/opt/velmora/qel/som/socket.conf",
                   "# test service\nsocket = " + socketPath_ +
                       "\ntimeout = " + std::to_string(timeoutSeconds) + "\n");
    listenFd_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    struct sockaddr_un addr = {};
    addr.sun_family = AF_UNIX;
    socketPath_.copy(addr.sun_path, sizeof addr.sun_path - 1);
    unlink(socketPath_.c_str());
    if (listenFd_ < 0 || bind(listenFd_, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0 ||
        listen(listenFd_, 64) != 0 || pipe2(wakePipe_, O_CLOEXEC) != 0) {
        throw std::runtime_error("fake service cannot listen");
    }
    thread_ = std::thread([this] { Serve(); });
}

FakeSomService::~FakeSomService() {
    Stop();
    close(wakePipe_[0]);
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

void FakeSomService::Push(Action action) {
    std::lock_guard<std::mutex> lock(mutex_);
    script_.push_back(std::move(action));
}

Request FakeSomService::LastRequest() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return requests_.empty() ? Request() : requests_.back();
}

void FakeSomService::Serve() {
    for (;;) {
        struct pollfd fds[2] = {{listenFd_, POLLIN, 0}, {wakePipe_[0], POLLIN, 0}};
        if (poll(fds, 2, -1) < 0)
            continue;
        if (fds[1].revents != 0)
            return;
        int fd = accept4(listenFd_, nullptr, nullptr, SOCK_CLOEXEC);
        if (fd >= 0) {
            Handle(fd);
            close(fd);
        }
    }
}

void FakeSomService::Handle(int fd) {
    std::unique_lock<std::mutex> lock(mutex_);
    Action action = script_.empty() ? Action() : script_.front();
    if (!script_.empty())
        script_.pop_front();
    lock.unlock();
    if (action.kind == Action::kCloseBeforeRequest)
        return;
    Request request;
    const bool whole = ReadRequest(fd, request);
    lock.lock();
    requests_.push_back(request);
    lock.unlock();
    if (!whole)
        return;
    if (action.kind == Action::kNeverAnswer) {
        // Hold the connection until the client closes it or the service stops.
        struct pollfd fds[2] = {{fd, POLLIN, 0}, {wakePipe_[0], POLLIN, 0}};
        char byte;
        while (poll(fds, 2, -1) > 0 && fds[1].revents == 0 && read(fd, &byte, 1) > 0) {
        }
        return;
    }
    const std::string reply =
        action.kind == Action::kRaw
            ? action.bytes
            : ReplyText(request.className, request.method, action.result, action.bytes);
    for (std::size_t done = 0; done < reply.size();) {
        ssize_t n = send(fd, reply.data() + done, reply.size() - done, MSG_NOSIGNAL);
        if (n <= 0)
            return;
        done += static_cast<std::size_t>(n);
    }
}

}  // namespace qel_test
