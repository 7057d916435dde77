// somd as a process, grouped by what breaks: limits (connections, deadlines,
// descriptors), instances (one per installation, only its own socket) and
// starting and stopping (socket activation, options, SIGTERM).
#include <gtest/gtest.h>

#include <poll.h>
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

#include "CSomIf.h"
#include "support/somd_process.h"
#include "support/test_data.h"

namespace {

using namespace qel_test;
using std::chrono::seconds;
typedef std::chrono::steady_clock Clock;

// Does the service answer a request (within the client's time-out)?
bool Served() {
    std::vector<CVELMORA_QelVersionInfo> versions;
    return CSomIf("lifecycle").CollectQelVersion(versions) == 0 && !versions.empty();
}

bool ServedSoon() {
    for (int i = 0; i < 300; ++i, usleep(10000)) {
        if (Served())
            return true;
    }
    return false;
}

int DescriptorCount(pid_t pid) {
    const std::filesystem::path fds = "/proc/" + std::to_string(pid) + "/fd";
    return static_cast<int>(std::distance(std::filesystem::directory_iterator(fds),
                                          std::filesystem::directory_iterator()));
}

// A Unix socket bound (not listening) at `path`; inherited by children.
int Bind(const std::string& path) {
    const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
    struct sockaddr_un addr = {};
    addr.sun_family = AF_UNIX;
    path.copy(addr.sun_path, sizeof addr.sun_path - 1);
    return bind(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) == 0 ? fd : -1;
}

std::string Identity(const std::string& path) {
    struct stat info = {};
    stat(path.c_str(), &info);
    return std::to_string(info.st_ino) + "/" + std::to_string(info.st_mtim.tv_nsec);
}

class SomdLifecycleTest : public ::testing::Test {
  protected:
    TempSysroot root;
    SomdProcess somd{root};
    const std::string socket = somd.SocketPath();
};

// --- Limits: 200 idle and trickling clients, more than the cap, keep no new
// client from being served and leave no descriptor behind; a trickler is cut
// off at the whole-request deadline; slow senders do not delay a SIGTERM.
TEST_F(SomdLifecycleTest, IdleAndTricklingClientsAreBoundedAndCutOff) {
    somd.Stop();
    somd.Start({"--max-connections", "64"});
    usleep(100000);  // the start-up probe's connection closes
    const int before = DescriptorCount(somd.pid());
    std::vector<int> clients;
    for (int i = 0; i < 200; ++i)
        clients.push_back(ConnectTo(socket));
    const auto start = Clock::now();
    for (int round = 0; round < 3; ++round) {  // a byte a second from some
        for (std::size_t i = 0; i < clients.size(); i += 4)
            send(clients[i], "0", 1, MSG_NOSIGNAL);
        usleep(round < 2 ? 1000000 : 0);
    }
    EXPECT_TRUE(Served());
    EXPECT_LT(Clock::now() - start, seconds(13));
    for (int fd : clients)
        close(fd);
    usleep(400000);
    EXPECT_EQ(DescriptorCount(somd.pid()), before);

    struct pollfd trickler = {ConnectTo(socket), POLLIN, 0};
    const auto connected = Clock::now();
    while (poll(&trickler, 1, 500) == 0 && Clock::now() - connected < seconds(10))
        send(trickler.fd, "0", 1, MSG_NOSIGNAL);  // never enough for a request
    EXPECT_GT(Clock::now() - connected, seconds(4));
    EXPECT_LT(Clock::now() - connected, seconds(7));
    close(trickler.fd);

    std::vector<int> slow;
    for (int i = 0; i < 20; ++i) {
        slow.push_back(ConnectTo(socket));
        send(slow.back(), "0000", 4, MSG_NOSIGNAL);
    }
    usleep(100000);
    const auto stopAt = Clock::now();
    EXPECT_EQ(somd.Stop(), 0);
    EXPECT_LT(Clock::now() - stopAt, seconds(2));
    for (int fd : slow)
        close(fd);
}

// With few descriptors allowed, accept fails with EMFILE: somd backs off
// (no busy loop: little CPU), says so, and serves again afterwards.
TEST_F(SomdLifecycleTest, RunningOutOfDescriptorsBacksOffAndRecovers) {
    somd.Stop();
    int errFd = -1;
    const pid_t pid = SpawnSomd({}, &errFd, [] {
        struct rlimit limit = {32, 32};
        setrlimit(RLIMIT_NOFILE, &limit);
    });
    ASSERT_TRUE(ServedSoon());
    std::vector<int> clients;
    for (int i = 0; i < 60; ++i)
        clients.push_back(ConnectTo(socket));
    EXPECT_EQ(std::count(clients.begin(), clients.end(), -1), 0);
    usleep(1500000);
    for (int fd : clients)
        close(fd);
    EXPECT_TRUE(Served());
    kill(pid, SIGTERM);
    int status = 0;
    struct rusage usage = {};
    wait4(pid, &status, 0, &usage);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_LT(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec, 1);
    const std::string log = ReadAll(errFd);
    EXPECT_NE(log.find("accept: Too many open files; retrying"), std::string::npos) << log;
}

// --- Instances: a second somd is refused, names the running one and touches
// neither its socket nor the state; a somd removes its own socket at the
// end, and only its own.
TEST_F(SomdLifecycleTest, OneServicePerInstallationAndOnlyItsOwnSocket) {
    ASSERT_EQ(CSomIf("x").AliveMonitorClearParameters(), 0);  // a state file
    const std::string socketBefore = Identity(socket);
    const std::string stateBefore = ReadFile(somd.StatePath()) + Identity(somd.StatePath());
    std::string message;
    EXPECT_EQ(somd.StartExpectingExit(message), 1);
    EXPECT_NE(message.find("another somd already serves this installation"), std::string::npos)
        << message;
    EXPECT_NE(message.find("socket " + socket), std::string::npos);
    EXPECT_EQ(Identity(socket), socketBefore);
    EXPECT_EQ(ReadFile(somd.StatePath()) + Identity(somd.StatePath()), stateBefore);
    EXPECT_TRUE(Served());

    EXPECT_EQ(somd.Stop(), 0);
    EXPECT_NE(access(socket.c_str(), F_OK), 0);
    somd.Start();
    unlink(socket.c_str());
    const int replacement = Bind(socket);
    ASSERT_GE(replacement, 0);
    EXPECT_EQ(somd.Stop(), 0);
    EXPECT_EQ(access(socket.c_str(), F_OK), 0);
    close(replacement);
}

// --- Starting and stopping: started by a socket unit, somd serves on the
// socket passed as fd 3 and leaves it in place; started alone, it binds its
// own with the mode and group asked for; bad option values are usage errors.
TEST_F(SomdLifecycleTest, SocketActivationAndStandaloneStart) {
    somd.Stop();
    const int listener = Bind(socket);
    ASSERT_EQ(listen(listener, 16), 0);
    const std::string inode = Identity(socket);
    int errFd = -1;
    pid_t pid = SpawnSomd({}, &errFd, [listener] {
        dup2(listener, 3);
        setenv("LISTEN_FDS", "1", 1);
        setenv("LISTEN_PID", std::to_string(getpid()).c_str(), 1);
    });
    close(listener);
    EXPECT_TRUE(ServedSoon());
    kill(pid, SIGTERM);
    EXPECT_EQ(WaitExit(pid, 2000), 0);
    EXPECT_EQ(Identity(socket), inode);
    EXPECT_NE(ReadAll(errFd).find("(passed by systemd)"), std::string::npos);

    const std::vector<std::vector<std::string>> bad = {{"--max-connections", "0"},
                                                       {"--socket-mode", "999"},
                                                       {"--work-ms", "12abc"},
                                                       {"--socket-mode"},
                                                       {"--bogus", "1"}};
    for (const auto& args : bad) {
        EXPECT_EQ(WaitExit(SpawnSomd(args, &errFd), 2000), 2) << args[0];
        EXPECT_NE(ReadAll(errFd).find("usage: somd"), std::string::npos);
    }
    unlink(socket.c_str());
    somd.Start({"--socket-mode", "0640", "--socket-group", "root"});
    ASSERT_TRUE(Served());  // served: the mode is set before anyone connects
    struct stat info = {};
    stat(socket.c_str(), &info);
    EXPECT_EQ(info.st_mode & 0777, 0640u);
    EXPECT_EQ(info.st_gid, 0u);
    EXPECT_EQ(somd.Stop(), 0);
}

}  // namespace
