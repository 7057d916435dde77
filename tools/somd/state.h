// What the reference service remembers across restarts: settings and
// schedules, priorities, the operating authority, applied updates and the
// logs. Saved as JSON, atomically (write, fsync, rename), mode 0600, before
// any change is acknowledged to a client.
#ifndef QEL_TOOLS_SOMD_STATE_H
#define QEL_TOOLS_SOMD_STATE_H

#include <map>
#include <string>
#include <vector>

#include "ScheduleRecords.h"
#include "VersionListRecords.h"
#include "scenario.h"

namespace somd {

struct State {
    CVELMORA_DownloadSetting downloadSetting;
    CVELMORA_DownloadSchedule downloadSchedule;
    CVELMORA_UpdateSchedule updateSchedule;
    std::vector<CVelmora_PriorityUpdateParam> priorities;
    std::string authorityHolder;
    std::vector<std::string> appliedUpdates;  // UniqueName of applied plans
    std::vector<std::string> downloadLog;
    std::vector<std::string> resultLog;
    std::vector<CVELMORA_VersionUpdateLog> versionLog;
    std::map<std::string, AliveParameter> alive;
};

// Reads `path`; a missing file gives a fresh state. Throws
// std::runtime_error when the file is not valid.
State LoadState(const std::string& path);

// Writes the whole state to `path` atomically; false (with errno set) when
// the file system refused.
bool SaveState(const State& state, const std::string& path);

}  // namespace somd

#endif  // QEL_TOOLS_SOMD_STATE_H
