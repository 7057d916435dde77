#include "somd_process.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include "test_data.h"

namespace qel_test {

pid_t SpawnSomd(const std::vector<std::string>& args, int* errFd,
                const std::function<void()>& inChild) {
    int err[2] = {-1, -1};
    if (errFd != nullptr && pipe2(err, O_CLOEXEC) != 0)
        return -1;
    const pid_t pid = fork();
    if (pid == 0) {
        if (errFd != nullptr)
            dup2(err[1], STDERR_FILENO);
        if (inChild)
            inChild();
        std::vector<char*> argv{const_cast<char*>("somd")};
        for (const std::string& arg : args)
            argv.push_back(const_cast<char*>(arg.c_str()));
        argv.push_back(nullptr);
        execv(QEL_SOMD_PATH, argv.data());
        _exit(127);
    }
    close(err[1]);
    if (errFd != nullptr)
        *errFd = err[0];
    return pid;
}

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
    char chunk[4096];
    for (ssize_t n; (n = read(fd, chunk, sizeof chunk)) > 0;)
        text.append(chunk, static_cast<std::size_t>(n));
    close(fd);
    return text;
}

namespace {

// A new Unix socket given to `call` (connect or bind) with `socketPath`.
int UnixSocket(const std::string& socketPath, int (*call)(int, const sockaddr*, socklen_t)) {
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    struct sockaddr_un addr = {};
    addr.sun_family = AF_UNIX;
    socketPath.copy(addr.sun_path, sizeof addr.sun_path - 1);
    if (call(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) == 0)
        return fd;
    close(fd);
    return -1;
}

std::vector<std::string> Options(const std::vector<std::string>& extra) {
    std::vector<std::string> args{"--work-ms", "200"};
    args.insert(args.end(), extra.begin(), extra.end());
    return args;
}

}  // namespace

int ConnectTo(const std::string& socketPath) {
    return UnixSocket(socketPath, connect);
}

int BindTo(const std::string& socketPath) {
    return UnixSocket(socketPath, bind);
}

void AwaitSocket(const std::string& socketPath) {
    int fd = -1;
    for (int i = 0; i < 400 && (fd = ConnectTo(socketPath)) < 0; ++i)
        usleep(10000);
    close(fd);
}

std::string RawExchange(const std::string& socketPath, const std::string& bytes) {
    const int fd = ConnectTo(socketPath);  // -1 fails all that follows
    send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    shutdown(fd, SHUT_WR);
    return ReadAll(fd);
}

std::string FileIdentity(const std::string& path) {
    struct stat info = {};
    lstat(path.c_str(), &info);
    return ReadFile(path) + "|" + std::to_string(info.st_ino) + "|" + std::to_string(info.st_mode) +
           "|" + std::to_string(info.st_mtim.tv_nsec);
}

ShellRun Shell(const std::string& line) {
    setenv("SOMCTL", QEL_SOMCTL_PATH, 1);
    setenv("SOMD", QEL_SOMD_PATH, 1);
    FILE* pipe = popen((line + " 2>&1").c_str(), "r");
    const std::string output = ReadAll(dup(fileno(pipe)));
    const int status = pclose(pipe);
    return ShellRun{WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

SomdProcess::SomdProcess(const TempSysroot& root) : root_(root) {
    if (Shell("bash " QEL_SOURCE_DIR "/scripts/make-sandbox.sh " + root.root()).code != 0)
        throw std::runtime_error("make-sandbox failed");
    Start();
}

void SomdProcess::Start(const std::vector<std::string>& extra) {
    pid_ = SpawnSomd(Options(extra));
    AwaitSocket(SocketPath());
}

int SomdProcess::Stop(int signal) {
    if (pid_ <= 0)
        return -1;
    kill(pid_, signal);
    const int status = WaitExit(pid_, 10000);
    pid_ = -1;
    return status;
}

int SomdProcess::StartExpectingExit(std::string& message, const std::vector<std::string>& extra) {
    int errFd = -1;
    const int status = WaitExit(SpawnSomd(Options(extra), &errFd), 3000);
    message = ReadAll(errFd);
    return status;
}

}  // namespace qel_test
