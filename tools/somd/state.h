// What the reference service remembers across restarts: settings and
// schedules, priorities, the operating authority, applied updates and the
// logs. Saved as compact JSON, atomically (write, fsync, rename), mode 0600, before
// any change is acknowledged to a client.
#ifndef QEL_TOOLS_SOMD_STATE_H
#define QEL_TOOLS_SOMD_STATE_H

#include <map>
#include <optional>
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

// Reads `path`; nothing when there is no such file. Throws
// std::runtime_error, naming the file and the problem, when the file cannot
// be read or does not validate; the file is left as it is.
std::optional<State> LoadState(const std::string& path);

// Replaces `path` with `text`: temporary file, write, fsync, rename, fsync of
// the directory. On any failure (errno set) `path` keeps its old content.
bool WriteFileAtomically(const std::string& path, const std::string& text);

// Writes the whole state to `path` atomically; false (with errno set) when
// the file system refused.
bool SaveState(const State& state, const std::string& path);

}  // namespace somd

#endif  // QEL_TOOLS_SOMD_STATE_H
