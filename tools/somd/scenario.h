// The data that the reference service serves: providers with their devices
// and tools, update plans, installed versions and alive-monitor defaults,
// read from a folder of JSON files.
//
//   providers.json  {"DeviceProviders": {"<class>": <CVelmora_DevProviderManageInfo>},
//                    "ToolProviders":   {"<class>": <CVelmora_ToolProviderManageInfo>}}
//   plans.json      [<CVELMORA_UpdatePlans>...]      the updates that are available
//   versions.json   [<CVELMORA_QelVersionInfo>...]
//   alive.json      {"<name>": {"Value": "<text>", "Type": <number>}}
//   service.json    {"RebootAfterUpdate": <kind>, "WorkMilliseconds": <ms>}
#ifndef QEL_TOOLS_SOMD_SCENARIO_H
#define QEL_TOOLS_SOMD_SCENARIO_H

#include <map>
#include <string>
#include <vector>

#include "ProviderManageRecords.h"
#include "VersionListRecords.h"

namespace somd {

struct AliveParameter {
    std::string value;
    unsigned type = 0;
};

struct Scenario {
    std::map<std::string, CVelmora_DevProviderManageInfo> deviceProviders;
    std::map<std::string, CVelmora_ToolProviderManageInfo> toolProviders;
    std::vector<CVELMORA_UpdatePlans> plans;
    std::vector<CVELMORA_QelVersionInfo> versions;
    std::map<std::string, AliveParameter> aliveDefaults;
    long rebootAfterUpdate = 0;
    int workMilliseconds = 300;
};

// Reads the folder; a missing file leaves its part empty. Throws
// std::runtime_error with the file's name when a file is not valid JSON.
Scenario LoadScenario(const std::string& folder);

}  // namespace somd

#endif  // QEL_TOOLS_SOMD_SCENARIO_H
