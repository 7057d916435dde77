// The reference SOM service's logic: one request in, one reply out. Safe to
// call from several connection threads at once.
#ifndef QEL_TOOLS_SOMD_SERVICE_H
#define QEL_TOOLS_SOMD_SERVICE_H

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>

#include "protocol.h"
#include "scenario.h"
#include "state.h"

namespace somd {

struct Reply {
    uint32_t result = 0;
    std::string body;
};

class SomService {
  public:
    // `statePath` may be empty: then nothing persists. Throws, naming the
    // file and the problem, when the state file cannot be read or does not
    // validate; `freshState` starts from the scenario instead of reading it
    // (the file is replaced at the first change).
    SomService(Scenario scenario, std::string statePath, bool freshState = false);

    Reply Handle(const Request& request);

    // The state as it is now (a copy).
    State Snapshot() const;

  private:
    typedef Reply (SomService::*Handler)(const Request&);

    Reply Dispatch(const Request& request);
    bool ServesClass(const std::string& className) const;
    void ResetInterruptedRun();
    Reply Persisted(const std::function<uint32_t(State&)>& change);
    void WriteProcessStatus(const char* status, const char* type);
    bool BeginBulk();
    void EndBulk();
    void Work();
    Reply ApplyPlans(bool rollback);
    std::vector<CVELMORA_UpdatePlans> PlansFor(bool rollback) const;

    Reply SetAutoDownloadSetting(const Request&);
    Reply GetAutoDownloadSetting(const Request&);
    Reply SetAutoUpdateSetting(const Request&);
    Reply GetAutoUpdateSetting(const Request&);
    Reply SetUpdatePriority(const Request&);
    Reply GetUpdatePlans(const Request&);
    Reply GetOperatingAuthority(const Request&);
    Reply ReleaseOperatingAuthority(const Request&);
    Reply DownloadAll(const Request&);
    Reply UpdateAll(const Request&);
    Reply RollbackAll(const Request&);
    Reply ExecuteReboot(const Request&);
    Reply Relayed(const Request&);
    Reply CheckUpdateModuleConformity(const Request&);
    Reply GetProviderManageInfo(const Request&);
    Reply CollectDownloadLog(const Request&);
    Reply CollectResultLog(const Request&);
    Reply CollectVersionUpLog(const Request&);
    Reply CollectQelVersion(const Request&);
    Reply AliveUpdate(const Request&);
    Reply AliveClear(const Request&);
    Reply AliveSet(const Request&);
    Reply AliveGet(const Request&);

    const Scenario scenario_;
    // The scenario's providers never change: each reply text is written once,
    // at the start, and a request only copies it.
    const std::map<std::string, std::string> providerTexts_;
    const std::string statePath_;
    mutable std::mutex mutex_;
    State state_;
    bool bulkRunning_ = false;
};

}  // namespace somd

#endif  // QEL_TOOLS_SOMD_SERVICE_H
