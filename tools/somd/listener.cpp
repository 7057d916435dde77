#include "listener.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <iostream>
#include <list>
#include <mutex>
#include <system_error>
#include <thread>

namespace somd {

namespace {

typedef std::chrono::steady_clock Clock;

// How long the loop leaves the listener alone when accept or thread creation
// fails for want of resources, and how often it checks the deadlines.
const int kBackOffMs = 100;
const int kTickMs = 100;

// One connection thread. The fd is closed by the thread under `mutex`, so
// that the loop never shuts down a descriptor number already reused.
struct Connection {
    std::mutex mutex;
    int fd = -1;
    bool reading = true;
    bool cutOff = false;
    std::atomic<bool> finished{false};
    Clock::time_point deadline;
    std::thread thread;
};

// Shuts down a connection that is still reading its request; its blocked
// read then sees the end of the stream. True when it did.
bool CutOffIfReading(Connection& connection) {
    std::lock_guard<std::mutex> lock(connection.mutex);
    if (!connection.reading || connection.fd < 0 || connection.cutOff)
        return false;
    shutdown(connection.fd, SHUT_RDWR);
    connection.cutOff = true;
    return true;
}

void RunConnection(Connection& connection, const ConnectionHandler& handler, int wakeFd) {
    try {
        handler(connection.fd, [&connection] {
            std::lock_guard<std::mutex> lock(connection.mutex);
            connection.reading = false;
        });
    } catch (const std::exception& e) {
        std::cerr << "somd: connection dropped: " << e.what() << "\n";
    } catch (...) {
        std::cerr << "somd: connection dropped: unknown fault\n";
    }
    {
        std::lock_guard<std::mutex> lock(connection.mutex);
        close(connection.fd);
        connection.fd = -1;
    }
    connection.finished = true;
    const char byte = 'w';
    (void)!write(wakeFd, &byte, 1);  // the loop joins it now, not at its next tick
}

// Logs a resource failure once per streak, not once per retry.
class FailureLog {
  public:
    void Failed(const char* what, int error) {
        if (!failing_)
            std::cerr << "somd: " << what << ": " << std::strerror(error) << "; retrying\n";
        failing_ = true;
    }
    void Succeeded() {
        if (failing_)
            std::cerr << "somd: accepting connections again\n";
        failing_ = false;
    }

  private:
    bool failing_ = false;
};

bool IsResourceShortage(int error) {
    return error == EMFILE || error == ENFILE || error == ENOBUFS || error == ENOMEM;
}

class AcceptLoop {
  public:
    AcceptLoop(int listenFd, int stopFd, const ListenerLimits& limits,
               const ConnectionHandler& handler)
        : listenFd_(listenFd), stopFd_(stopFd), limits_(limits), handler_(handler) {
        if (pipe2(wake_, O_CLOEXEC | O_NONBLOCK) != 0)
            throw std::system_error(errno, std::generic_category(), "pipe");
    }
    ~AcceptLoop() {
        close(wake_[0]);
        close(wake_[1]);
    }

    void Run() {
        while (WaitForWork()) {
            JoinFinished();
            CutOffLateSenders();
            if (!listenerReady_)
                continue;
            if (HasRoom())
                AcceptOne();
            else
                CutOffOldestReader();
        }
        for (Connection& connection : connections_)
            CutOffIfReading(connection);
        for (Connection& connection : connections_)
            connection.thread.join();
        connections_.clear();
    }

  private:
    bool HasRoom() const { return static_cast<int>(connections_.size()) < limits_.maxConnections; }

    // At the cap, a waiting client makes room by cutting off the longest
    // reader, one at a time; a connection busy with its reply (a bulk run)
    // is never cut. Without any reader, the client waits in the backlog.
    bool MayMakeRoom() const {
        bool reader = false;
        for (const Connection& connection : connections_) {
            if (connection.cutOff && !connection.finished)
                return false;
            reader = reader || connection.reading;
        }
        return reader;
    }

    // Polls the stop pipe, the wake pipe and, when a connection could be
    // taken, the listener. False once stopping.
    bool WaitForWork() {
        const bool watchListener = Clock::now() >= backOffUntil_ && (HasRoom() || MayMakeRoom());
        struct pollfd fds[3] = {
            {stopFd_, POLLIN, 0}, {wake_[0], POLLIN, 0}, {listenFd_, POLLIN, 0}};
        const int ready = poll(fds, watchListener ? 3 : 2, kTickMs);
        if (ready < 0 && errno != EINTR) {
            std::cerr << "somd: poll: " << std::strerror(errno) << "\n";
            return false;
        }
        char drain[64];
        while (read(wake_[0], drain, sizeof drain) > 0) {
        }
        listenerReady_ = ready > 0 && watchListener && (fds[2].revents & POLLIN) != 0;
        return ready <= 0 || fds[0].revents == 0;
    }

    void JoinFinished() {
        for (auto it = connections_.begin(); it != connections_.end();) {
            if (it->finished) {
                it->thread.join();
                it = connections_.erase(it);
            } else {
                ++it;
            }
        }
    }

    void CutOffLateSenders() {
        const Clock::time_point now = Clock::now();
        for (Connection& connection : connections_) {
            if (now >= connection.deadline)
                CutOffIfReading(connection);
        }
    }

    void CutOffOldestReader() {
        for (Connection& connection : connections_) {  // in the order accepted
            if (CutOffIfReading(connection))
                return;
        }
    }

    void BackOff(const char* what, int error) {
        failures_.Failed(what, error);
        backOffUntil_ = Clock::now() + std::chrono::milliseconds(kBackOffMs);
    }

    void AcceptOne() {
        const int fd = accept4(listenFd_, nullptr, nullptr, SOCK_CLOEXEC);
        if (fd < 0) {
            // EAGAIN, EINTR, ECONNABORTED: the next round retries.
            if (IsResourceShortage(errno))
                BackOff("accept", errno);
            return;
        }
        connections_.emplace_back();
        Connection& connection = connections_.back();
        connection.fd = fd;
        connection.deadline = Clock::now() + std::chrono::milliseconds(limits_.requestDeadlineMs);
        try {
            connection.thread =
                std::thread(RunConnection, std::ref(connection), std::cref(handler_), wake_[1]);
        } catch (const std::system_error& e) {
            close(fd);
            connections_.pop_back();
            BackOff("cannot start a connection thread", e.code().value());
            return;
        }
        failures_.Succeeded();
    }

    const int listenFd_;
    const int stopFd_;
    const ListenerLimits limits_;
    const ConnectionHandler& handler_;
    int wake_[2] = {-1, -1};
    std::list<Connection> connections_;  // stable addresses for the threads
    FailureLog failures_;
    bool listenerReady_ = false;
    Clock::time_point backOffUntil_;
};

}  // namespace

void RunAcceptLoop(int listenFd, int stopFd, const ListenerLimits& limits,
                   const ConnectionHandler& handler) {
    AcceptLoop(listenFd, stopFd, limits, handler).Run();
}

}  // namespace somd
