// somd as a process: connection limits, deadlines, one instance per
// installation, signals and start-up modes.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "CSomIf.h"
#include "support/somd_process.h"

namespace {

using qel_test::SomdProcess;
using qel_test::TempSysroot;
typedef std::chrono::steady_clock Clock;

int Connect(const std::string& path) {
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    struct sockaddr_un addr = {};
    addr.sun_family = AF_UNIX;
    path.copy(addr.sun_path, sizeof addr.sun_path - 1);
    if (connect(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0) {
        close(fd);
        return -1;
    }
    return fd;
}

// Does the service answer a request (within the client's time-out)?
bool Served() {
    std::vector<CVELMORA_QelVersionInfo> versions;
    return CSomIf("lifecycle").CollectQelVersion(versions) == 0 && !versions.empty();
}

// Starts somd with `args`; `inChild` runs in the child before the exec.
// Its stderr goes to a pipe whose read end is returned in `errFd`.
pid_t Spawn(
    const std::vector<std::string>& args, int& errFd,
    const std::function<void()>& inChild = [] {}) {
    int err[2];
    if (pipe2(err, O_CLOEXEC) != 0)
        return -1;
    const pid_t pid = fork();
    if (pid == 0) {
        dup2(err[1], STDERR_FILENO);
        inChild();
        std::vector<char*> argv{const_cast<char*>("somd")};
        for (const std::string& arg : args)
            argv.push_back(const_cast<char*>(arg.c_str()));
        argv.push_back(nullptr);
        execv(QEL_SOMD_PATH, argv.data());
        _exit(127);
    }
    close(err[1]);
    errFd = err[0];
    return pid;
}

// Waits up to `ms` for `pid`; its exit status, -1 when killed or still
// running (then it is killed).
int WaitExit(pid_t pid, int ms) {
    int status = 0;
    for (int i = 0; i < ms / 10 && waitpid(pid, &status, WNOHANG) == 0; ++i)
        usleep(10000);
    if (waitpid(pid, &status, WNOHANG) == 0) {
        kill(pid, SIGKILL);
        waitpid(pid, &status, 0);
        return -1;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string ReadAll(int fd) {
    std::string text;
    char chunk[512];
    ssize_t n;
    while ((n = read(fd, chunk, sizeof chunk)) > 0)
        text.append(chunk, static_cast<std::size_t>(n));
    close(fd);
    return text;
}

bool WaitForPath(const std::string& path) {
    for (int i = 0; i < 300; ++i) {
        if (access(path.c_str(), F_OK) == 0)
            return true;
        usleep(10000);
    }
    return false;
}

ino_t Inode(const std::string& path) {
    struct stat info = {};
    return stat(path.c_str(), &info) == 0 ? info.st_ino : 0;
}

class SomdLifecycleTest : public ::testing::Test {
  protected:
    TempSysroot root;
    SomdProcess somd{root};
    const std::string socket = root.Path("/run/som.sock");
};

// Idle and trickling clients, up to more than the cap, neither stop a new
// client from being served nor leave descriptors behind once they leave;
// SIGTERM then stops somd within 2 s although they are still connected.
TEST_F(SomdLifecycleTest, ManyIdleAndTricklingClientsNeitherBlockNorLeakNorDelayAStop) {
    somd.Stop();
    int errFd = -1;
    const pid_t pid = Spawn({"--max-connections", "64"}, errFd);
    ASSERT_TRUE(WaitForPath(socket) && Served());
    auto descriptors = [pid] {
        return static_cast<int>(std::distance(
            std::filesystem::directory_iterator("/proc/" + std::to_string(pid) + "/fd"),
            std::filesystem::directory_iterator()));
    };
    usleep(100000);  // the first request's connection closes
    const int before = descriptors();
    std::vector<int> clients;
    for (int i = 0; i < 200; ++i)
        clients.push_back(Connect(socket));
    const auto start = Clock::now();
    for (int round = 0; round < 3; ++round) {  // a byte a second from some
        for (std::size_t i = 0; i < clients.size(); i += 4)
            send(clients[i], "0", 1, MSG_NOSIGNAL);
        usleep(round < 2 ? 1000000 : 0);
    }
    EXPECT_TRUE(Served());
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(13));
    for (int fd : clients)
        close(fd);
    usleep(400000);
    EXPECT_EQ(descriptors(), before);

    std::vector<int> slow;
    for (int i = 0; i < 20; ++i) {
        slow.push_back(Connect(socket));
        send(slow.back(), "0000", 4, MSG_NOSIGNAL);
    }
    usleep(100000);
    const auto stopAt = Clock::now();
    kill(pid, SIGTERM);
    EXPECT_EQ(WaitExit(pid, 2000), 0);
    EXPECT_LT(Clock::now() - stopAt, std::chrono::seconds(2));
    for (int fd : slow)
        close(fd);
    close(errFd);
}

// With few descriptors allowed, accept fails with EMFILE: somd backs off
// (no busy loop: little CPU), says so once, and serves again afterwards.
TEST_F(SomdLifecycleTest, RunningOutOfDescriptorsBacksOffAndRecovers) {
    somd.Stop();
    int errFd = -1;
    const pid_t pid = Spawn({}, errFd, [] {
        struct rlimit limit = {32, 32};
        setrlimit(RLIMIT_NOFILE, &limit);
    });
    ASSERT_TRUE(WaitForPath(socket) && Served());
    std::vector<int> clients;
    for (int i = 0; i < 60; ++i)
        clients.push_back(Connect(socket));
    EXPECT_EQ(std::count(clients.begin(), clients.end(), -1), 0);
    usleep(1500000);
    struct rusage usage = {};
    for (int fd : clients)
        close(fd);
    EXPECT_TRUE(Served());
    kill(pid, SIGTERM);
    int status = 0;
    wait4(pid, &status, 0, &usage);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_LT(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec, 1);
    const std::string log = ReadAll(errFd);
    EXPECT_NE(log.find("accept: Too many open files; retrying"), std::string::npos) << log;
}

// A second somd on the same installation is refused, names the running one
// and touches neither its socket nor the state; a somd whose socket was
// replaced leaves the replacement alone when it stops.
TEST_F(SomdLifecycleTest, OneServicePerInstallation) {
    ASSERT_TRUE(Served());
    const ino_t socketInode = Inode(socket);
    struct stat stateBefore = {};
    stat(somd.StatePath().c_str(), &stateBefore);
    int errFd = -1;
    const pid_t second = Spawn({}, errFd);
    EXPECT_EQ(WaitExit(second, 3000), 1);
    const std::string message = ReadAll(errFd);
    EXPECT_NE(message.find("another somd already serves this installation"), std::string::npos);
    EXPECT_NE(message.find("socket " + socket), std::string::npos);
    EXPECT_EQ(Inode(socket), socketInode);
    struct stat stateAfter = {};
    stat(somd.StatePath().c_str(), &stateAfter);
    EXPECT_EQ(stateAfter.st_mtim.tv_nsec, stateBefore.st_mtim.tv_nsec);
    EXPECT_TRUE(Served());

    unlink(socket.c_str());
    const int other = Connect(socket);  // nothing there any more
    EXPECT_EQ(other, -1);
    const int replacement = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    struct sockaddr_un addr = {};
    addr.sun_family = AF_UNIX;
    socket.copy(addr.sun_path, sizeof addr.sun_path - 1);
    ASSERT_EQ(bind(replacement, reinterpret_cast<sockaddr*>(&addr), sizeof addr), 0);
    EXPECT_EQ(somd.Stop(), 0);
    EXPECT_EQ(access(socket.c_str(), F_OK), 0);
    close(replacement);
}

// Started by a socket unit: somd serves on the socket it is passed (fd 3)
// and leaves that socket in place when it stops; bad option values are
// usage errors.
TEST_F(SomdLifecycleTest, SocketActivationAndStartOptions) {
    somd.Stop();
    const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
    struct sockaddr_un addr = {};
    addr.sun_family = AF_UNIX;
    socket.copy(addr.sun_path, sizeof addr.sun_path - 1);
    ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&addr), sizeof addr), 0);
    ASSERT_EQ(listen(listener, 16), 0);
    const ino_t inode = Inode(socket);
    int errFd = -1;
    const pid_t pid = Spawn({}, errFd, [listener] {
        dup2(listener, 3);
        setenv("LISTEN_FDS", "1", 1);
        setenv("LISTEN_PID", std::to_string(getpid()).c_str(), 1);
    });
    close(listener);
    EXPECT_TRUE(Served());
    kill(pid, SIGTERM);
    EXPECT_EQ(WaitExit(pid, 2000), 0);
    EXPECT_EQ(Inode(socket), inode);
    EXPECT_NE(ReadAll(errFd).find("(passed by systemd)"), std::string::npos);

    const std::vector<std::vector<std::string>> bad = {{"--max-connections", "0"},
                                                       {"--socket-mode", "999"},
                                                       {"--work-ms", "12abc"},
                                                       {"--socket-mode"},
                                                       {"--bogus", "1"}};
    for (const auto& args : bad) {
        const pid_t refused = Spawn(args, errFd);
        EXPECT_EQ(WaitExit(refused, 2000), 2) << args[0];
        close(errFd);
    }
    unlink(socket.c_str());
    const pid_t custom = Spawn({"--socket-mode", "0640", "--socket-group", "root"}, errFd);
    ASSERT_TRUE(WaitForPath(socket) && Served());  // served: the mode is set
    struct stat info = {};
    stat(socket.c_str(), &info);
    EXPECT_EQ(info.st_mode & 0777, 0640u);
    EXPECT_EQ(info.st_gid, 0u);
    kill(custom, SIGTERM);
    EXPECT_EQ(WaitExit(custom, 2000), 0);
    close(errFd);
}

}  // namespace
