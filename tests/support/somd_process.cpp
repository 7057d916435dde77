#include "somd_process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

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
    ssize_t n;
    while ((n = read(fd, chunk, sizeof chunk)) > 0)
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

}  // namespace

int ConnectTo(const std::string& socketPath) {
    return UnixSocket(socketPath, connect);
}

int BindTo(const std::string& socketPath) {
    return UnixSocket(socketPath, bind);
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

SomdProcess::SomdProcess(const TempSysroot& root, int workMs) : root_(root), workMs_(workMs) {
    const std::string command =
        std::string("bash ") + QEL_SOURCE_DIR + "/scripts/make-sandbox.sh " + root.root();
    if (std::system(command.c_str()) != 0)
        throw std::runtime_error("make-sandbox failed");
    Start();
}

std::vector<std::string> SomdProcess::Options(const std::vector<std::string>& extra) const {
    std::vector<std::string> args{"--work-ms", std::to_string(workMs_)};
    args.insert(args.end(), extra.begin(), extra.end());
    return args;
}

void SomdProcess::Start(const std::vector<std::string>& extra) {
    pid_ = SpawnSomd(Options(extra));
    int fd = -1;
    for (int i = 0; i < 400 && (fd = ConnectTo(SocketPath())) < 0; ++i)
        usleep(10000);
    close(fd);
}

int SomdProcess::Stop() {
    if (pid_ <= 0)
        return -1;
    kill(pid_, SIGTERM);
    const int status = WaitExit(pid_, 10000);
    pid_ = -1;
    return status;
}

void SomdProcess::Kill() {
    if (pid_ > 0)
        kill(pid_, SIGKILL);
    Stop();
}

int SomdProcess::StartExpectingExit(std::string& message, const std::vector<std::string>& extra) {
    int errFd = -1;
    const int status = WaitExit(SpawnSomd(Options(extra), &errFd), 3000);
    message = ReadAll(errFd);
    return status;
}

}  // namespace qel_test
