// Bulk runs: download, update and rollback of every pending module, and the
// reboot after them. On a terminal a run shows which module it is at, asks
// before it changes the machine, and Ctrl-C says that the run goes on in the
// service.
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <iostream>
#include <mutex>
#include <thread>

#include "commands.h"
#include "common/protocol.h"

namespace somctl {
namespace {

bool Interactive() {
    return isatty(STDIN_FILENO) && isatty(STDERR_FILENO);
}

// On a terminal, asks before an action that cannot be taken back.
bool Confirmed(Context& c, const std::string& what) {
    if (c.yes || !Interactive())
        return true;
    std::fprintf(stderr, "%s now? [y/N] ", what.c_str());
    std::string answer;
    return std::getline(std::cin, answer) && (answer == "y" || answer == "yes");
}

// The modules a run works through, in the service's order, and the log that
// the service writes a line to as each one is done.
struct RunPlan {
    std::vector<std::string> modules;
    bool downloadLog = false;
};

RunPlan PlanOf(CSomIf& som, const std::string& what) {
    RunPlan plan;
    if (what == "reboot")
        return plan;
    std::vector<CVELMORA_UpdatePlans> plans;
    som.GetUpdatePlans(qel::protocol::kUpdateManager, what == "rollback", plans);
    for (const CVELMORA_UpdatePlans& p : plans)
        plan.modules.push_back(p.UniqueName.empty() ? p.DisplayName : p.UniqueName);
    plan.downloadLog = what == "download";
    return plan;
}

// A status line on standard error while a run waits: which module, how many
// of how many are done. It reads the service's log through a connection of
// its own; only on a terminal.
class Progress {
  public:
    Progress(const std::string& what, const std::string& appKey, bool enabled)
        : what_(what), appKey_(appKey), enabled_(enabled && isatty(STDERR_FILENO)) {
        if (!enabled_)
            return;
        UseSocketOverride(som_);
        plan_ = PlanOf(som_, what);
        baseline_ = LogLines().size();
        thread_ = std::thread([this] { Show(); });
    }
    ~Progress() {
        if (!enabled_)
            return;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            stop_ = true;
        }
        wake_.notify_all();
        thread_.join();
    }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

  private:
    std::vector<std::string> LogLines() {
        std::vector<std::string> lines;
        if (plan_.downloadLog)
            som_.CollectDownloadLog(appKey_, lines);
        else if (!plan_.modules.empty())
            som_.CollectResultLog(appKey_, lines);
        return lines;
    }

    // Modules named in the log lines written since the run began.
    std::size_t Done() {
        const std::vector<std::string> lines = LogLines();
        std::size_t done = 0;
        for (const std::string& module : plan_.modules) {
            for (std::size_t i = baseline_; i < lines.size(); ++i) {
                if (lines[i].find(module) != std::string::npos) {
                    ++done;
                    break;
                }
            }
        }
        return done;
    }

    void Show() {
        const char frames[] = "|/-\\";
        std::unique_lock<std::mutex> lock(mutex_);
        std::size_t done = 0;
        for (int tick = 0; !stop_; ++tick) {
            if (tick % 5 == 0 && !plan_.modules.empty()) {
                lock.unlock();  // the destructor must not wait for a call
                done = Done();
                lock.lock();
            }
            std::string line = what_;
            if (!plan_.modules.empty()) {
                line += ": " + std::to_string(done) + " of " +
                        std::to_string(plan_.modules.size()) + " done";
                if (done < plan_.modules.size())
                    line += ", at " + plan_.modules[done];
            }
            std::fprintf(stderr, "\r\033[K%c %s", frames[tick % 4], line.c_str());
            std::fflush(stderr);
            wake_.wait_for(lock, std::chrono::milliseconds(100), [this] { return stop_; });
        }
        std::fprintf(stderr, "\r\033[K");
        std::fflush(stderr);
    }

    std::string what_;
    std::string appKey_;
    bool enabled_;
    CSomIf som_{"somctl"};
    RunPlan plan_;
    std::size_t baseline_ = 0;
    bool stop_ = false;
    std::mutex mutex_;
    std::condition_variable wake_;
    std::thread thread_;
};

// Ctrl-C during a run ends somctl, not the run: a thread of its own takes
// the signal, says so, gives back the authority that this run took (the
// call that holds it never returns to do it) and exits 130.
class InterruptWatch {
  public:
    InterruptWatch(const std::string& what, const std::string& appKey, bool releaseAuthority) {
        sigemptyset(&interrupt_);
        sigaddset(&interrupt_, SIGINT);
        pthread_sigmask(SIG_BLOCK, &interrupt_, &previousMask_);
        thread_ = std::thread([this, what, appKey, releaseAuthority] {
            int signal = 0;
            sigwait(&interrupt_, &signal);
            if (finished_)
                return;
            std::fprintf(stderr,
                         "\nsomctl: interrupted; the %s goes on in the service ('somctl status' "
                         "shows it)\n",
                         what.c_str());
            if (releaseAuthority) {
                CSomIf som("somctl");
                UseSocketOverride(som);
                som.ReleaseOperatingAuthority(qel::protocol::kUpdateManager, appKey);
            }
            _exit(128 + SIGINT);
        });
    }
    ~InterruptWatch() {
        finished_ = true;
        pthread_kill(thread_.native_handle(), SIGINT);
        thread_.join();
        pthread_sigmask(SIG_SETMASK, &previousMask_, nullptr);
    }
    InterruptWatch(const InterruptWatch&) = delete;
    InterruptWatch& operator=(const InterruptWatch&) = delete;

  private:
    sigset_t interrupt_;
    sigset_t previousMask_;
    std::atomic<bool> finished_{false};
    std::thread thread_;
};

HRESULT RunBulk(Context& c, const std::string& what, LONG& reboot) {
    if (what == "download") {
        CVELMORA_DownloadSetting setting;
        CVELMORA_DownloadSchedule schedule;
        HRESULT rc = c.som.GetAutoDownloadSetting(setting, schedule);
        return static_cast<uint32_t>(rc) == 0 ? c.som.DownloadAll(setting) : rc;
    }
    if (what == "update")
        return c.som.UpdateAll(reboot);
    if (what == "rollback")
        return c.som.RollbackAll(reboot);
    return c.som.ExecuteReboot();
}

}  // namespace

int Bulk(Context& c, const Args& args) {
    const std::string what = args[0];
    if (args.size() > 1)
        return c.output.Usage("usage: somctl " + what);
    if (what != "download" && !Confirmed(c, what))
        return c.output.Usage(what + " not confirmed (--yes acts without asking)");
    ChangeGuard guard(c);
    if (int exit = guard.Acquire(what))
        return exit;
    LONG reboot = 0;
    HRESULT rc = 0;
    {
        InterruptWatch watch(what, c.appKey, guard.TookAuthority());
        Progress progress(what, c.appKey, !c.output.json());
        rc = RunBulk(c, what, reboot);
    }
    if (int exit = c.output.Result(what, rc))
        return exit;
    if (c.output.json()) {
        c.output.Json({{"ok", true}, {"operation", what}, {"rebootKind", reboot}});
    } else if (what == "reboot") {
        c.output.out() << "reboot requested\n";
    } else {
        c.output.out() << what << " finished";
        if (reboot != 0)
            c.output.out() << "; a reboot is needed (kind " << reboot << ")";
        c.output.out() << "\n";
    }
    return kOk;
}

}  // namespace somctl
