// somd: the reference SOM service. Serves the protocol of libqel_SomIf on
// the Unix socket that socket.conf names (under QEL_SYSROOT), one request and
// one reply per connection, with data from a scenario folder and state that
// persists across restarts.
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>
#include <thread>

#include "CFileTransfer.h"
#include "CFileUtility.h"
#include "common/service_codes.h"
#include "protocol.h"
#include "service.h"

namespace {

const char kSocketConfig[] = "/opt/velmora/qel/som/socket.conf";
const char kDefaultScenario[] = "/opt/velmora/qel/som/scenario";
const char kDefaultState[] = "/opt/velmora/qel/som/somd-state.json";
const int kRequestTimeoutMs = 5000;

int g_stopPipe[2] = {-1, -1};

void OnStopSignal(int) {
    const char byte = 's';
    (void)!write(g_stopPipe[1], &byte, 1);
}

const char kUsage[] =
    "usage: somd [--scenario DIR] [--state FILE] [--work-ms N]\n"
    "\n"
    "Serves the SOM protocol on the socket named in\n"
    "$QEL_SYSROOT/opt/velmora/qel/som/socket.conf until SIGTERM or SIGINT.\n"
    "\n"
    "  --scenario DIR  scenario folder (default $QEL_SYSROOT/opt/velmora/qel/som/scenario)\n"
    "  --state FILE    state file (default $QEL_SYSROOT/opt/velmora/qel/som/somd-state.json)\n"
    "  --work-ms N     how long a download, update or rollback takes\n";

struct Options {
    std::string scenario = CFileUtility::SystemPath(kDefaultScenario);
    std::string state = CFileUtility::SystemPath(kDefaultState);
    int workMs = -1;
};

bool ParseOptions(int argc, char** argv, Options& options) {
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (arg == "--scenario" && hasValue) {
            options.scenario = argv[++i];
        } else if (arg == "--state" && hasValue) {
            options.state = argv[++i];
        } else if (arg == "--work-ms" && hasValue) {
            options.workMs = std::atoi(argv[++i]);
        } else {
            return false;
        }
    }
    return true;
}

int Listen(const std::string& path) {
    struct sockaddr_un addr;
    std::memset(&addr, 0, sizeof addr);
    addr.sun_family = AF_UNIX;
    if (path.size() >= sizeof addr.sun_path)
        return -1;
    std::memcpy(addr.sun_path, path.data(), path.size());
    int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0)
        return -1;
    unlink(path.c_str());
    if (bind(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0 ||
        chmod(path.c_str(), 0660) != 0 || listen(fd, 128) != 0) {
        close(fd);
        return -1;
    }
    return fd;
}

// Serves one connection: one request, one reply. A request that names a
// class and method but breaks the format is answered with an error code;
// anything else that is not a request is dropped.
void Serve(somd::SomService& service, int fd) {
    somd::Request request;
    switch (somd::ReadRequest(fd, kRequestTimeoutMs, request)) {
        case somd::ReadStatus::kOk: {
            somd::Reply reply = service.Handle(request);
            somd::WriteAll(fd, somd::FormatReply(request, reply.result, reply.body));
            break;
        }
        case somd::ReadStatus::kMalformed:
            somd::WriteAll(fd, somd::FormatReply(request, somd::kBadRequest, ""));
            break;
        case somd::ReadStatus::kGarbage:
        case somd::ReadStatus::kClosed:
            break;
    }
    close(fd);
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    if (argc == 2 && (std::string(argv[1]) == "--help" || std::string(argv[1]) == "-h")) {
        std::cout << kUsage;
        return 0;
    }
    if (!ParseOptions(argc, argv, options)) {
        std::cerr << kUsage;
        return 2;
    }
    std::string socketPath;
    int timeout = 0;
    if (!CFileTransfer::ReadConfiguration(kSocketConfig, socketPath, timeout)) {
        std::cerr << "somd: no socket in " << CFileUtility::SystemPath(kSocketConfig) << "\n";
        return 1;
    }
    std::unique_ptr<somd::SomService> service;
    try {
        somd::Scenario scenario = somd::LoadScenario(options.scenario);
        if (options.workMs >= 0)
            scenario.workMilliseconds = options.workMs;
        service.reset(new somd::SomService(std::move(scenario), options.state));
    } catch (const std::exception& e) {
        std::cerr << "somd: " << e.what() << "\n";
        return 1;
    }
    if (pipe2(g_stopPipe, O_CLOEXEC) != 0)
        return 1;
    struct sigaction stop = {};
    stop.sa_handler = OnStopSignal;
    sigaction(SIGTERM, &stop, nullptr);
    sigaction(SIGINT, &stop, nullptr);
    signal(SIGPIPE, SIG_IGN);

    const int listener = Listen(socketPath);
    if (listener < 0) {
        std::cerr << "somd: cannot listen on " << socketPath << ": " << std::strerror(errno)
                  << "\n";
        return 1;
    }
    std::cerr << "somd: listening on " << socketPath << "\n";

    std::atomic<int> active{0};
    for (;;) {
        struct pollfd fds[2] = {{listener, POLLIN, 0}, {g_stopPipe[0], POLLIN, 0}};
        if (poll(fds, 2, -1) < 0) {
            if (errno == EINTR)
                continue;
            break;
        }
        if (fds[1].revents != 0)
            break;
        int fd = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (fd < 0)
            continue;
        ++active;
        std::thread([&service, &active, fd] {
            Serve(*service, fd);
            --active;
        }).detach();
    }
    close(listener);
    unlink(socketPath.c_str());
    // Let the connections in flight finish (a bulk run may take a while).
    for (int i = 0; i < 600 && active.load() > 0; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    std::cerr << "somd: stopped\n";
    return 0;
}
