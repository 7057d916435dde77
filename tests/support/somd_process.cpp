#include "somd_process.h"

#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

namespace qel_test {

SomdProcess::SomdProcess(const TempSysroot& root, int workMs) : root_(root), workMs_(workMs) {
    const std::string command =
        std::string("bash ") + QEL_SOURCE_DIR + "/scripts/make-sandbox.sh " + root.root();
    if (std::system(command.c_str()) != 0)
        throw std::runtime_error("make-sandbox failed");
    Start();
}

SomdProcess::~SomdProcess() {
    if (pid_ > 0)
        Stop();
}

std::string SomdProcess::StatePath() const {
    return root_.Path("/opt/velmora/qel/som/somd-state.json");
}

void SomdProcess::Start() {
    const std::string socket = root_.Path("/run/som.sock");
    unlink(socket.c_str());
    pid_ = fork();
    if (pid_ == 0) {
        const std::string work = std::to_string(workMs_);
        execl(QEL_SOMD_PATH, "somd", "--work-ms", work.c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    struct stat info;
    for (int i = 0; i < 200 && stat(socket.c_str(), &info) != 0; ++i)
        usleep(20000);
}

int SomdProcess::Stop() {
    if (pid_ <= 0)
        return -1;
    kill(pid_, SIGTERM);
    int status = 0;
    waitpid(pid_, &status, 0);
    pid_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int SomdProcess::StartExpectingExit(std::string& message) {
    int err[2];
    if (pipe(err) != 0)
        return -1;
    const pid_t pid = fork();
    if (pid == 0) {
        dup2(err[1], STDERR_FILENO);
        const std::string work = std::to_string(workMs_);
        execl(QEL_SOMD_PATH, "somd", "--work-ms", work.c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    close(err[1]);
    int status = 0;
    for (int i = 0; i < 150 && waitpid(pid, &status, WNOHANG) == 0; ++i)
        usleep(20000);
    if (waitpid(pid, &status, WNOHANG) == 0) {
        kill(pid, SIGKILL);
        waitpid(pid, &status, 0);
        status = -1;
    }
    char chunk[512];
    ssize_t n;
    message.clear();
    while ((n = read(err[0], chunk, sizeof chunk)) > 0)
        message.append(chunk, static_cast<std::size_t>(n));
    close(err[0]);
    return status != -1 && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void SomdProcess::Kill() {
    if (pid_ <= 0)
        return;
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
    pid_ = -1;
}

}  // namespace qel_test
