// The commands of somctl, one family per source file, and what they share:
// the context of a run and the guard that every change holds.
#ifndef QEL_TOOLS_SOMCTL_COMMANDS_H
#define QEL_TOOLS_SOMCTL_COMMANDS_H

#include <string>
#include <vector>

#include "CSomIf.h"
#include "output.h"
#include "somctl.h"

namespace somctl {

typedef std::vector<std::string> Args;  // the command's name, then its arguments

// --socket PATH: the socket of this run instead of the one that socket.conf
// names. Every transport that somctl opens goes through UseSocketOverride.
void SetSocketOverride(const std::string& path);
const std::string& SocketOverride();
void UseSocketOverride(CFileTransfer& transport);

struct Context {
    CSomIf& som;
    Output& output;
    std::string appKey;
    bool yes;  // --yes: act without asking on a terminal
};

// Held around every change. The operating authority is a lock that
// applications honour: a change refuses while another key holds it, and
// otherwise takes it for this key for the change's length (keeping it when
// this key held it already). Two somctl runs with the same key pass that check
// together, so the read-modify-write of a record is also serialised by an
// flock on socket.conf, a file every somctl of the installation can open and
// that nobody rewrites.
class ChangeGuard {
  public:
    explicit ChangeGuard(Context& c) : c_(c) {}
    ~ChangeGuard();
    ChangeGuard(const ChangeGuard&) = delete;
    ChangeGuard& operator=(const ChangeGuard&) = delete;

    // 0 when the change may go ahead, else the exit code already reported.
    int Acquire(const std::string& operation);
    // Whether Acquire took the authority (and the destructor gives it back).
    bool TookAuthority() const { return tookAuthority_; }

  private:
    Context& c_;
    int lockFd_ = -1;
    bool tookAuthority_ = false;
};

// Logs, versions and what the service is doing (status_commands.cpp).
int Status(Context& c, const Args& args);
int Versions(Context& c, const Args& args);
int Log(Context& c, const Args& args);
// Settings, schedules, priorities and plans (setting_commands.cpp).
int DownloadSetting(Context& c, const Args& args);
int UpdateSetting(Context& c, const Args& args);
int Priority(Context& c, const Args& args);
int Plans(Context& c, const Args& args);
// The operating authority (authority.cpp).
int Authority(Context& c, const Args& args);
// Bulk runs: download, update, rollback, reboot (bulk_commands.cpp).
int Bulk(Context& c, const Args& args);
// Providers, registered services and device names (provider_commands.cpp).
int Providers(Context& c, const Args& args);
int Services(Context& c, const Args& args);
int Name(Context& c, const Args& args);
// The alive monitor and raw method calls (monitor_commands.cpp).
int Monitor(Context& c, const Args& args);
int Exec(Context& c, const Args& args);

}  // namespace somctl

#endif  // QEL_TOOLS_SOMCTL_COMMANDS_H
