// somd: the reference SOM service. Serves the protocol of libqel_SomIf on
// the Unix socket that socket.conf names (under QEL_SYSROOT), one request and
// one reply per connection, with data from a scenario folder and state that
// persists across restarts.
#include <fcntl.h>
#include <grp.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <systemd/sd-daemon.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>

#include "CFileTransfer.h"
#include "CFileUtility.h"
#include "common/protocol.h"
#include "common/service_codes.h"
#include "instance_lock.h"
#include "listener.h"
#include "protocol.h"
#include "replay.h"
#include "service.h"

namespace {

using qel::protocol::kSocketConfig;
const char kDefaultScenario[] = "/opt/velmora/qel/som/scenario";
const char kDefaultState[] = "/opt/velmora/qel/som/somd-state.json";

int g_stopPipe[2] = {-1, -1};

void OnStopSignal(int) {
    const char byte = 's';
    (void)!write(g_stopPipe[1], &byte, 1);
}

const char kUsage[] =
    "usage: somd [--scenario DIR] [--state FILE] [--work-ms N] [--fresh-state]\n"
    "            [--max-connections N] [--socket-group NAME] [--socket-mode OCTAL]\n"
    "            [--replay FILE]\n"
    "\n"
    "Serves the SOM protocol on the socket named in\n"
    "$QEL_SYSROOT/opt/velmora/qel/som/socket.conf (or on the socket that systemd\n"
    "passes when started by a socket unit) until SIGTERM or SIGINT.\n"
    "\n"
    "  --scenario DIR         scenario folder (default $QEL_SYSROOT/opt/velmora/qel/som/scenario)\n"
    "  --state FILE           state file (default "
    "$QEL_SYSROOT/opt/velmora/qel/som/somd-state.json)\n"
    "  --fresh-state          start from the scenario, ignoring the state file (it is\n"
    "                         replaced at the first change)\n"
    "  --work-ms N            how long a download, update or rollback takes\n"
    "  --max-connections N    connections served at once (default 256); more wait\n"
    "  --socket-group NAME    group that owns the socket (default the user's group)\n"
    "  --socket-mode OCTAL    the socket's permissions (default 0660)\n"
    "  --replay FILE          serve the replies of a recording (QEL_RECORD) instead of\n"
    "                         a scenario; an unrecorded request gets 0x8000A008\n";

struct Options {
    std::string scenario = CFileUtility::SystemPath(kDefaultScenario);
    std::string state = CFileUtility::SystemPath(kDefaultState);
    int workMs = -1;
    bool freshState = false;
    somd::ListenerLimits limits;
    std::string socketGroup;
    mode_t socketMode = 0660;
    std::string replay;
};

// A whole number in [low, high] written in `base`; false for anything else.
bool ParseNumber(const char* text, int base, long low, long high, long& value) {
    char* end = nullptr;
    errno = 0;
    value = std::strtol(text, &end, base);
    return errno == 0 && end != text && *end == '\0' && value >= low && value <= high;
}

bool ParseOptions(int argc, char** argv, Options& options) {
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--fresh-state") {
            options.freshState = true;
            continue;
        }
        if (i + 1 >= argc)
            return false;
        const char* value = argv[++i];
        long number = 0;
        if (arg == "--scenario") {
            options.scenario = value;
        } else if (arg == "--replay" && *value != '\0') {
            options.replay = value;
        } else if (arg == "--state") {
            options.state = value;
        } else if (arg == "--work-ms" && ParseNumber(value, 10, 0, 3600000, number)) {
            options.workMs = static_cast<int>(number);
        } else if (arg == "--max-connections" && ParseNumber(value, 10, 1, 65536, number)) {
            options.limits.maxConnections = static_cast<int>(number);
        } else if (arg == "--socket-group" && *value != '\0') {
            options.socketGroup = value;
        } else if (arg == "--socket-mode" && ParseNumber(value, 8, 0, 0777, number)) {
            options.socketMode = static_cast<mode_t>(number);
        } else {
            return false;
        }
    }
    return true;
}

gid_t GroupId(const std::string& name) {
    struct group entry;
    struct group* found = nullptr;
    char buffer[4096];
    if (getgrnam_r(name.c_str(), &entry, buffer, sizeof buffer, &found) != 0 || !found)
        throw std::runtime_error("no group named " + name);
    return found->gr_gid;
}

// The listening socket: the one systemd passed, or one bound at `path`.
// Remembers what it bound so that only that file is removed at the end.
class ListeningSocket {
  public:
    ListeningSocket(const std::string& path, const Options& options) : path_(path) {
        const int passed = sd_listen_fds(1);
        if (passed > 1)
            throw std::runtime_error("systemd passed " + std::to_string(passed) +
                                     " sockets; expected one");
        if (passed == 1) {
            if (sd_is_socket_unix(SD_LISTEN_FDS_START, SOCK_STREAM, 1, nullptr, 0) <= 0)
                throw std::runtime_error("the socket systemd passed is no listening Unix socket");
            fd_ = SD_LISTEN_FDS_START;
            fcntl(fd_, F_SETFD, FD_CLOEXEC);
            return;
        }
        Bind(options);
    }
    ~ListeningSocket() {
        close(fd_);
        struct stat now;
        if (bound_ && stat(path_.c_str(), &now) == 0 && now.st_dev == bound_->st_dev &&
            now.st_ino == bound_->st_ino) {
            unlink(path_.c_str());
        }
    }
    ListeningSocket(const ListeningSocket&) = delete;
    ListeningSocket& operator=(const ListeningSocket&) = delete;

    int fd() const { return fd_; }
    bool activated() const { return !bound_; }

  private:
    void Bind(const Options& options) {
        const gid_t group =
            options.socketGroup.empty() ? static_cast<gid_t>(-1) : GroupId(options.socketGroup);
        struct sockaddr_un addr;
        std::memset(&addr, 0, sizeof addr);
        addr.sun_family = AF_UNIX;
        if (path_.size() >= sizeof addr.sun_path)
            throw std::runtime_error("socket path too long: " + path_);
        std::memcpy(addr.sun_path, path_.data(), path_.size());
        fd_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        if (fd_ < 0)
            Fail("socket");
        // Whatever is at the path was left by a somd that ended without
        // cleaning up: the instance lock says no other one runs.
        unlink(path_.c_str());
        // Owner-only until the group and mode are set; listening at once so
        // that a client that sees the path can connect.
        const mode_t umaskBefore = umask(0177);
        const int bound = bind(fd_, reinterpret_cast<sockaddr*>(&addr), sizeof addr);
        umask(umaskBefore);
        if (bound != 0 || listen(fd_, 128) != 0)
            Fail("bind");
        bound_.reset(new struct stat);
        if (stat(path_.c_str(), bound_.get()) != 0)
            Fail("stat");
        if (group != static_cast<gid_t>(-1) &&
            chown(path_.c_str(), static_cast<uid_t>(-1), group) != 0)
            Fail("chown");
        if (chmod(path_.c_str(), options.socketMode) != 0)
            Fail("chmod");
    }
    // The destructor does not run for a constructor that throws.
    [[noreturn]] void Fail(const char* what) {
        const int error = errno;
        if (bound_)
            unlink(path_.c_str());
        close(fd_);
        throw std::runtime_error(std::string("cannot listen on ") + path_ + ": " + what + ": " +
                                 std::strerror(error));
    }

    const std::string path_;
    int fd_ = -1;
    std::unique_ptr<struct stat> bound_;  // set once this process bound the path
};

// Serves one connection: one request, one reply. A request that names a
// class and method but breaks the format is answered with an error code;
// anything else that is not a request is dropped. The listener's deadline
// bounds the whole read, so each piece may wait as long as it likes.
void Serve(somd::SomService& service, int fd, const std::function<void()>& requestRead) {
    const int kPieceTimeoutMs = 60000;
    somd::Request request;
    const somd::ReadStatus status = somd::ReadRequest(fd, kPieceTimeoutMs, request);
    requestRead();
    switch (status) {
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
}

void InstallStopSignals() {
    if (pipe2(g_stopPipe, O_CLOEXEC) != 0)
        throw std::runtime_error(std::string("pipe: ") + std::strerror(errno));
    struct sigaction stop = {};
    stop.sa_handler = OnStopSignal;
    sigaction(SIGTERM, &stop, nullptr);
    sigaction(SIGINT, &stop, nullptr);
    signal(SIGPIPE, SIG_IGN);
}

int Run(const Options& options) {
    std::string socketPath;
    int timeout = 0;
    if (!CFileTransfer::ReadConfiguration(kSocketConfig, socketPath, timeout)) {
        std::cerr << "somd: no socket in " << CFileUtility::SystemPath(kSocketConfig) << "\n";
        return 1;
    }
    // The lock comes first: a refused start must touch neither the state
    // nor the socket.
    somd::InstanceLock lock(options.state, socketPath);
    std::unique_ptr<somd::Replay> replay;
    std::unique_ptr<somd::SomService> service;
    if (!options.replay.empty()) {
        replay.reset(new somd::Replay(options.replay));
    } else {
        somd::Scenario scenario = somd::LoadScenario(options.scenario);
        if (options.workMs >= 0)
            scenario.workMilliseconds = options.workMs;
        service.reset(new somd::SomService(std::move(scenario), options.state, options.freshState));
    }
    InstallStopSignals();
    ListeningSocket listener(socketPath, options);
    std::cerr << "somd: listening on " << socketPath
              << (listener.activated() ? " (passed by systemd)" : "") << "\n";
    sd_notify(0, "READY=1");
    somd::RunAcceptLoop(listener.fd(), g_stopPipe[0], options.limits,
                        [&](int fd, const std::function<void()>& requestRead) {
                            if (replay)
                                replay->Serve(fd, requestRead);
                            else
                                Serve(*service, fd, requestRead);
                        });
    sd_notify(0, "STOPPING=1");
    std::cerr << "somd: stopped\n";
    return 0;
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
    try {
        return Run(options);
    } catch (const std::exception& e) {
        std::cerr << "somd: " << e.what() << "\n";
        return 1;
    }
}
