// Real somd processes in a sandbox installation, and the raw socket and shell
// helpers that the process-level tests drive them and somctl with.
#ifndef QEL_TESTS_SUPPORT_SOMD_PROCESS_H
#define QEL_TESTS_SUPPORT_SOMD_PROCESS_H

#include <signal.h>
#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

#include "temp_sysroot.h"

namespace qel_test {

// Starts somd with `args`; `inChild` runs in the child before the exec.
// With `errFd`, its stderr goes to a pipe whose read end is returned there.
pid_t SpawnSomd(const std::vector<std::string>& args, int* errFd = nullptr,
                const std::function<void()>& inChild = {});
// Waits up to `ms` for `pid`: its exit status, or -1 when a signal ended it or
// it was still running (it is then killed).
int WaitExit(pid_t pid, int ms);
// Reads `fd` to its end and closes it.
std::string ReadAll(int fd);
// A client socket connected to `socketPath` (a socket bound there), or -1.
int ConnectTo(const std::string& socketPath);
int BindTo(const std::string& socketPath);
// Waits up to 4 s until `socketPath` takes a connection.
void AwaitSocket(const std::string& socketPath);
// Sends `bytes`, shuts the sending side and returns all that comes back.
std::string RawExchange(const std::string& socketPath, const std::string& bytes);
// Content, inode, mode and time of change of `path` (not following a link):
// equal when nothing touched it.
std::string FileIdentity(const std::string& path);

// A shell line run with $SOMCTL and $SOMD naming the binaries under test: its
// exit code (-1 for a signal), and its standard output and error together.
struct ShellRun {
    int code;
    std::string output;
};
ShellRun Shell(const std::string& line);

class SomdProcess {
  public:
    // Lays out the default scenario under `root` (QEL_SYSROOT) and starts
    // somd with 200 ms per bulk run.
    explicit SomdProcess(const TempSysroot& root);
    ~SomdProcess() { Stop(); }
    SomdProcess(const SomdProcess&) = delete;
    SomdProcess& operator=(const SomdProcess&) = delete;

    // Starts somd with `extra` options and waits until it accepts.
    void Start(const std::vector<std::string>& extra = {});
    // Sends `signal` and waits: the exit status (-1 when a signal ended it).
    int Stop(int signal = SIGTERM);
    // Starts a somd that is expected to refuse to start: its exit status
    // (-1 when it still ran after 3 s), its stderr in `message`.
    int StartExpectingExit(std::string& message, const std::vector<std::string>& extra = {});
    pid_t pid() const { return pid_; }
    std::string StatePath() const { return root_.Path("/opt/velmora/qel/som/somd-state.json"); }
    std::string SocketPath() const { return root_.Path("/run/som.sock"); }

  private:
    const TempSysroot& root_;
    pid_t pid_ = -1;
};

}  // namespace qel_test

#endif  // QEL_TESTS_SUPPORT_SOMD_PROCESS_H
