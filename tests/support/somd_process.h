// Real somd processes in a sandbox installation, and the raw socket helpers
// that the tests of somd drive them with.
#ifndef QEL_TESTS_SUPPORT_SOMD_PROCESS_H
#define QEL_TESTS_SUPPORT_SOMD_PROCESS_H

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
// A client socket connected to `socketPath`, or -1.
int ConnectTo(const std::string& socketPath);
// A socket bound (not listening) at `socketPath`, or -1.
int BindTo(const std::string& socketPath);
// Sends `bytes`, shuts the sending side and returns all that comes back.
std::string RawExchange(const std::string& socketPath, const std::string& bytes);
// Content, inode, mode and time of change of `path` (not following a link):
// equal when nothing touched it.
std::string FileIdentity(const std::string& path);

class SomdProcess {
  public:
    // Lays out the default scenario under `root` (QEL_SYSROOT) and starts
    // somd with `workMs` per bulk run.
    explicit SomdProcess(const TempSysroot& root, int workMs = 200);
    ~SomdProcess() { Stop(); }
    SomdProcess(const SomdProcess&) = delete;
    SomdProcess& operator=(const SomdProcess&) = delete;

    // Starts somd with `extra` options and waits until it accepts.
    void Start(const std::vector<std::string>& extra = {});
    // SIGTERM and wait; the exit status (-1 when a signal ended it).
    int Stop();
    // SIGKILL and wait.
    void Kill();
    // Starts a somd that is expected to refuse to start: its exit status
    // (-1 when it still ran after 3 s), its stderr in `message`.
    int StartExpectingExit(std::string& message, const std::vector<std::string>& extra = {});
    pid_t pid() const { return pid_; }
    std::string StatePath() const { return root_.Path("/opt/velmora/qel/som/somd-state.json"); }
    std::string SocketPath() const { return root_.Path("/run/som.sock"); }

  private:
    std::vector<std::string> Options(const std::vector<std::string>& extra) const;

    const TempSysroot& root_;
    int workMs_;
    pid_t pid_ = -1;
};

}  // namespace qel_test

#endif  // QEL_TESTS_SUPPORT_SOMD_PROCESS_H
