// A real somd process in a sandbox installation, for integration tests.
#ifndef QEL_TESTS_SUPPORT_SOMD_PROCESS_H
#define QEL_TESTS_SUPPORT_SOMD_PROCESS_H

#include <sys/types.h>

#include <string>

#include "temp_sysroot.h"

namespace qel_test {

class SomdProcess {
  public:
    // Lays out the default scenario under `root` (QEL_SYSROOT) and starts
    // somd with `workMs` per bulk run.
    explicit SomdProcess(const TempSysroot& root, int workMs = 200);
    ~SomdProcess();
    SomdProcess(const SomdProcess&) = delete;
    SomdProcess& operator=(const SomdProcess&) = delete;

    void Start();
    // SIGTERM and wait; the exit status (-1 when killed by a signal).
    int Stop();
    // SIGKILL and wait.
    void Kill();
    // Starts a somd that is expected to refuse to start: its exit status
    // (-1 when it was still running after 3 s and was killed), stderr in
    // `message`.
    int StartExpectingExit(std::string& message);
    bool running() const { return pid_ > 0; }
    std::string StatePath() const;

  private:
    const TempSysroot& root_;
    int workMs_;
    pid_t pid_ = -1;
};

}  // namespace qel_test

#endif  // QEL_TESTS_SUPPORT_SOMD_PROCESS_H
