#include "service.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <optional>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <functional>
#include <thread>

#include "CFileUtility.h"
#include "CSerializedMsg.h"
#include "CUpDownSchedule.h"
#include "CVersionUpLog.h"
#include "IWbemClassObject.h"
#include "QelItemText.h"
#include "common/protocol.h"
#include "common/record_codec.h"
#include "common/service_codes.h"
#include "provider_info/plain_text.h"

namespace somd {
namespace {

namespace wire = qel::protocol;
namespace method = qel::protocol::method;
namespace param = qel::protocol::param;
namespace status = qel::protocol::status;
using wire::kUpdateManager;

const char kTraceName[] = "somd";

// A mutable copy of a request body for the library's scanners.
struct Body {
    explicit Body(const std::string& text) : text(text) {}
    char* get() { return &text[0]; }
    std::string text;
};

std::string Param(const std::string& body, const char* name) {
    Body copy(body);
    std::string value;
    CSerializedMsg codec(kTraceName);
    codec.getParam(copy.get(), name, value);
    return value;
}

bool IsTrue(const std::string& value) {
    return value == "1" || value == qel::item::kTrue;
}

std::string Now() {
    std::time_t now = std::time(nullptr);
    struct tm parts;
    localtime_r(&now, &parts);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts);
    return text;
}

// A list reply: header item, then one item per field of every record.
template <class Record>
std::string ListBody(const std::vector<Record>& records) {
    std::string out;
    qel::item::AppendItem(out, qel::item::kTagClassArray, qel::ListHeader(Record()), "");
    qel::ItemWriter writer(out);
    for (const Record& record : records)
        qel::VisitFields(record, writer);
    return out;
}

std::string LinesBody(const std::vector<std::string>& lines) {
    std::string out;
    if (lines.empty())
        return out;  // no item: no lines
    qel::item::AppendStringArrayItem(out, param::kLines, lines);
    return out;
}

std::string FakeHash(const std::string& text) {
    char hex[40];
    std::snprintf(hex, sizeof hex, "%016zx%016zx", std::hash<std::string>()(text),
                  std::hash<std::string>()(text + "#"));
    return hex;
}

void AppendConformityEntry(std::string& out, const std::string& provider,
                           const CVelmora_DeviceInfo* device, const std::string& unique,
                           const CVelmora_ManageModuleInfo& module,
                           const CVelmora_ManageRepositoryInfo& entry) {
    using namespace qel::item;
    using namespace wire::conformity;
    AppendStringItem(out, kProviderName, provider);
    AppendStringItem(out, kVendorName, device != nullptr ? device->VendorName : "");
    AppendStringItem(out, kUpdateModuleKind, module.ModuleKind);
    AppendItem(out, kTagClass, kModuleInfo, "");
    AppendStringItem(out, kUniqueName, unique);
    AppendStringItem(out, kDispName, entry.DisplayName);
    AppendStringItem(out, kModuleName, module.ModuleName);
    AppendItem(out, kTagClass, kAttrInfo, "");
    AppendStringItem(out, kHardwareVersion, entry.HardwareVersion);
    AppendStringItem(out, kVendorVersion, entry.VendorVersion);
    AppendIntItem(out, kPriority, entry.Priority);
    AppendStringItem(out, kReqProviderVersion, entry.ReqProviderVersion);
    AppendItem(out, kTagClass, kLinkInfo, "");
    AppendStringItem(out, kRebootAfterPreUpdate, entry.RebootAfterPreUpdate);
    AppendStringItem(out, kRebootAfterUpdate, entry.RebootAfterUpdate);
    AppendStringItem(out, kRebootAfterRestore, entry.RebootAfterRestore);
    AppendBoolItem(out, kRecovery, entry.Recovery);
    AppendItem(out, kTagClassArray, kFileInfo, "");
    for (const std::string& file : entry.ModuleFileName) {
        AppendStringItem(out, kKind, "module");
        AppendStringItem(out, kUrl, entry.ModulePath);
        AppendStringItem(out, kPhysiName, file);
        AppendStringItem(out, kMd5Hash, FakeHash(file));
    }
}

}  // namespace

namespace {

std::map<std::string, std::string> ProviderTexts(const Scenario& scenario) {
    std::map<std::string, std::string> texts;
    for (const auto& [name, provider] : scenario.deviceProviders)
        qel::pm::WritePlainText(provider, texts[name]);
    for (const auto& [name, provider] : scenario.toolProviders) {
        if (texts.count(name) == 0)  // a device provider of that name is served first
            qel::pm::WritePlainText(provider, texts[name]);
    }
    return texts;
}

}  // namespace

SomService::SomService(Scenario scenario, std::string statePath, bool freshState)
    : scenario_(std::move(scenario)),
      providerTexts_(ProviderTexts(scenario_)),
      statePath_(std::move(statePath)) {
    std::optional<State> saved;
    if (!statePath_.empty() && !freshState)
        saved = LoadState(statePath_);
    if (saved) {
        state_ = std::move(*saved);  // an empty saved monitor list stays empty
    } else {
        state_.alive = scenario_.aliveDefaults;
    }
    ResetInterruptedRun();
}

// One request's fault fails that request only.
Reply SomService::Handle(const Request& request) {
    try {
        return Dispatch(request);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "somd: %s/%s failed: %s\n", request.className.c_str(),
                     request.method.c_str(), e.what());
        return Reply{kBadRequest, ""};
    }
}

bool SomService::ServesClass(const std::string& className) const {
    return className == kUpdateManager || scenario_.deviceProviders.count(className) != 0 ||
           scenario_.toolProviders.count(className) != 0;
}

// Every request the service answers: class and method to handler. A route
// without a class serves the update manager and every provider class of the
// scenario; any other pair is refused and changes nothing.
Reply SomService::Dispatch(const Request& request) {
    struct Route {
        const char* className;
        const char* method;
        Handler handler;
    };
    static const Route kRoutes[] = {
        {kUpdateManager, method::kSetAutoDownloadSetting, &SomService::SetAutoDownloadSetting},
        {kUpdateManager, method::kGetAutoDownloadSetting, &SomService::GetAutoDownloadSetting},
        {kUpdateManager, method::kSetAutoUpdateSetting, &SomService::SetAutoUpdateSetting},
        {kUpdateManager, method::kGetAutoUpdateSetting, &SomService::GetAutoUpdateSetting},
        {kUpdateManager, method::kDownloadAll, &SomService::DownloadAll},
        {kUpdateManager, method::kUpdateAll, &SomService::UpdateAll},
        {kUpdateManager, method::kRollbackAll, &SomService::RollbackAll},
        {kUpdateManager, method::kExecuteReboot, &SomService::ExecuteReboot},
        {wire::kLogManager, method::kCollectDownloadLog, &SomService::CollectDownloadLog},
        {wire::kLogManager, method::kCollectResultLog, &SomService::CollectResultLog},
        {wire::kLogManager, method::kCollectVersionUpLog, &SomService::CollectVersionUpLog},
        {wire::kQelVersion, method::kCollectQelVersion, &SomService::CollectQelVersion},
        {wire::kToolServiceWD, method::kAliveUpdate, &SomService::AliveUpdate},
        {wire::kToolServiceWD, method::kAliveClear, &SomService::AliveClear},
        {wire::kToolServiceWD, method::kAliveSet, &SomService::AliveSet},
        {wire::kToolServiceWD, method::kAliveGet, &SomService::AliveGet},
        {nullptr, method::kSetUpdatePriority, &SomService::SetUpdatePriority},
        {nullptr, method::kGetUpdatePlans, &SomService::GetUpdatePlans},
        {nullptr, method::kGetOperatingAuthority, &SomService::GetOperatingAuthority},
        {nullptr, method::kReleaseOperatingAuthority, &SomService::ReleaseOperatingAuthority},
        {nullptr, method::kCheckUpdateModuleConformity, &SomService::CheckUpdateModuleConformity},
        {nullptr, method::kGetProviderManageInfo, &SomService::GetProviderManageInfo},
        {nullptr, method::kReboot, &SomService::Relayed},
        {nullptr, method::kExecuteUpdateApplyCheck, &SomService::Relayed},
        {nullptr, method::kRegisterUpdateModule, &SomService::Relayed},
        {nullptr, method::kSetDependencyInfo, &SomService::Relayed},
        {nullptr, method::kExecuteUpdateRestore, &SomService::Relayed},
        {nullptr, method::kExecutePreUpdate, &SomService::Relayed},
        {nullptr, method::kExecuteUpdateBackup, &SomService::Relayed},
        {nullptr, method::kExecuteUpdate, &SomService::Relayed},
    };
    for (const Route& route : kRoutes) {
        if (request.method != route.method)
            continue;
        const bool served = route.className != nullptr ? request.className == route.className
                                                       : ServesClass(request.className);
        if (served)
            return (this->*route.handler)(request);
    }
    return Reply{kUnknownMethod, ""};
}

State SomService::Snapshot() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return state_;
}

Reply SomService::Persisted(const std::function<uint32_t(State&)>& change) {
    std::lock_guard<std::mutex> lock(mutex_);
    State next = state_;
    const uint32_t code = change(next);
    if (code != 0)
        return Reply{code, ""};
    if (!statePath_.empty() && !SaveState(next, statePath_))
        return Reply{kStateNotSaved, ""};
    state_ = std::move(next);
    return Reply{0, ""};
}

// --- Settings ------------------------------------------------------------------

Reply SomService::SetAutoDownloadSetting(const Request& request) {
    Body body(request.body);
    CVELMORA_DownloadSchedule schedule;
    CVELMORA_DownloadSetting setting;
    CUpDownSchedule codec(kTraceName);
    codec.toObject(body.get(), schedule, setting);
    // A body that is not exactly what the two records write back did not
    // parse: refused, nothing changed.
    std::string written;
    codec.toString(setting, schedule, written);
    if (written != request.body)
        return Reply{kBadRequest, ""};
    return Persisted([&](State& s) {
        s.downloadSchedule = schedule;
        s.downloadSetting = setting;
        return 0u;
    });
}

Reply SomService::GetAutoDownloadSetting(const Request&) {
    State s = Snapshot();
    Reply reply;
    CUpDownSchedule(kTraceName).toString(s.downloadSetting, s.downloadSchedule, reply.body);
    return reply;
}

Reply SomService::SetAutoUpdateSetting(const Request& request) {
    Body body(request.body);
    CVELMORA_UpdateSchedule schedule;
    CUpDownSchedule codec(kTraceName);
    codec.toObject(body.get(), schedule);
    std::string written;
    codec.toString(schedule, written);
    if (written != request.body)
        return Reply{kBadRequest, ""};
    return Persisted([&](State& s) {
        s.updateSchedule = schedule;
        return 0u;
    });
}

Reply SomService::GetAutoUpdateSetting(const Request&) {
    State s = Snapshot();
    Reply reply;
    CUpDownSchedule(kTraceName).toString(s.updateSchedule, reply.body);
    return reply;
}

Reply SomService::SetUpdatePriority(const Request& request) {
    Body body(request.body);
    CUpDownSchedule codec(kTraceName);
    std::string scratch;
    char* fields = codec.compareItem(body.get(), "Velmora_PriorityUpdateParam", scratch);
    if (fields == nullptr || fields == body.get())
        return Reply{kBadRequest, ""};
    CVelmora_PriorityUpdateParam param;
    codec.toObject(fields, param);
    return Persisted([&](State& s) {
        // The priority carries its application's key: while another key
        // holds the operating authority, the change is refused.
        if (!s.authorityHolder.empty() && s.authorityHolder != param.AppKey)
            return kAuthorityHeld;
        for (CVelmora_PriorityUpdateParam& existing : s.priorities) {
            if (existing.DeviceID == param.DeviceID && existing.ModuleKind == param.ModuleKind) {
                existing = param;
                return 0u;
            }
        }
        s.priorities.push_back(param);
        return 0u;
    });
}

// --- Plans and authority ---------------------------------------------------------------

std::vector<CVELMORA_UpdatePlans> SomService::PlansFor(bool rollback) const {
    std::vector<std::string> applied;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        applied = state_.appliedUpdates;
    }
    std::vector<CVELMORA_UpdatePlans> plans;
    for (const CVELMORA_UpdatePlans& plan : scenario_.plans) {
        bool isApplied = false;
        for (const std::string& unique : applied)
            isApplied = isApplied || unique == plan.UniqueName;
        if (isApplied != rollback)
            continue;
        CVELMORA_UpdatePlans shown = plan;
        if (rollback)
            std::swap(shown.CurrentVendorVersion, shown.NextVendorVersion);
        plans.push_back(shown);
    }
    return plans;
}

Reply SomService::GetUpdatePlans(const Request& request) {
    return Reply{0, ListBody(PlansFor(IsTrue(Param(request.body, param::kRollback))))};
}

Reply SomService::GetOperatingAuthority(const Request& request) {
    const std::string key = Param(request.body, param::kAppKey);
    if (key.empty())
        return Reply{kBadRequest, ""};
    return Persisted([&](State& s) {
        if (!s.authorityHolder.empty() && s.authorityHolder != key)
            return kAuthorityHeld;
        s.authorityHolder = key;
        return 0u;
    });
}

Reply SomService::ReleaseOperatingAuthority(const Request& request) {
    const std::string key = Param(request.body, param::kAppKey);
    return Persisted([&](State& s) {
        if (s.authorityHolder.empty())
            return 0u;  // nothing to release
        if (s.authorityHolder != key)
            return kNotAuthorityHolder;
        s.authorityHolder.clear();
        return 0u;
    });
}

// --- Bulk runs -------------------------------------------------------------------------

namespace {

std::string ProcessStatusPath() {
    return CFileUtility::GetInstallPath(2) + wire::kProcessStatusFile;
}

const std::string kStatusLine = std::string(status::kStatusKey) + "=";

}  // namespace

// Atomic: readers see the old status or the new one, never an empty or
// partial file, even when the disk is full.
void SomService::WriteProcessStatus(const char* status, const char* type) {
    const std::string text = std::string("[") + status::kSection + "]\n" + kStatusLine + status +
                             "\n" + status::kTypeKey + "=" + type + "\n";
    if (!WriteFileAtomically(ProcessStatusPath(), text)) {
        std::fprintf(stderr, "somd: %s not written: %s\n", ProcessStatusPath().c_str(),
                     std::strerror(errno));
    }
}

// A run cut short by a stop or a kill left its status behind: no run goes
// on in a service that is just starting, so the status goes back to idle
// and the result log says so.
void SomService::ResetInterruptedRun() {
    std::ifstream in(ProcessStatusPath());
    std::string line, current;
    while (std::getline(in, line)) {
        if (line.compare(0, kStatusLine.size(), kStatusLine) == 0)
            current = line.substr(kStatusLine.size());
    }
    if (current.empty() || current == status::kIdle)
        return;
    WriteProcessStatus(status::kIdle, "");
    const std::string entry = Now() + " " + current + " run interrupted by a restart; status reset";
    std::fprintf(stderr, "somd: %s\n", entry.c_str());
    state_.resultLog.push_back(entry);
    if (!statePath_.empty() && !SaveState(state_, statePath_))
        std::fprintf(stderr, "somd: state not saved: %s\n", std::strerror(errno));
}

bool SomService::BeginBulk() {
    std::lock_guard<std::mutex> lock(mutex_);
    if (bulkRunning_)
        return false;
    bulkRunning_ = true;
    return true;
}

void SomService::EndBulk() {
    WriteProcessStatus(status::kIdle, "");
    std::lock_guard<std::mutex> lock(mutex_);
    bulkRunning_ = false;
}

void SomService::Work() {
    std::this_thread::sleep_for(std::chrono::milliseconds(scenario_.workMilliseconds));
}

Reply SomService::DownloadAll(const Request& request) {
    if (!BeginBulk())
        return Reply{kBusy, ""};
    WriteProcessStatus(status::kDownload, "");
    Work();
    // The setting names the source; its passwords are never logged.
    Body body(request.body);
    IWbemClassObject sections;
    CUpDownSchedule(kTraceName).String2IWbem(body.get(), sections);
    std::string source = "the configured site";
    if (IWbemClassObject* const* setting =
            sections.GetAs<IWbemClassObject*>(qel::SectionName(CVELMORA_DownloadSetting()))) {
        if (const std::string* url = (*setting)->GetAs<std::string>("WebSiteUrl")) {
            if (!url->empty())
                source = *url;
        }
    }
    const std::vector<CVELMORA_UpdatePlans> plans = PlansFor(false);
    Reply reply = Persisted([&](State& s) {
        if (plans.empty())
            s.downloadLog.push_back(Now() + " nothing to download");
        for (const CVELMORA_UpdatePlans& plan : plans) {
            s.downloadLog.push_back(Now() + " downloaded " + plan.DisplayName + " " +
                                    plan.NextVendorVersion + " from " + source);
        }
        return 0u;
    });
    EndBulk();
    return reply;
}

Reply SomService::UpdateAll(const Request&) {
    return ApplyPlans(/*rollback=*/false);
}

Reply SomService::RollbackAll(const Request&) {
    return ApplyPlans(/*rollback=*/true);
}

// An update applies the available plans, a rollback undoes the applied
// ones; both log every module and report the reboot kind.
Reply SomService::ApplyPlans(bool rollback) {
    if (!BeginBulk())
        return Reply{kBusy, ""};
    WriteProcessStatus(status::kUpdate, rollback ? status::kRollback : status::kUpdate);
    Work();
    const std::vector<CVELMORA_UpdatePlans> plans = PlansFor(rollback);
    const std::string verb = rollback ? " rolled back " : " updated ";
    Reply reply = Persisted([&](State& s) {
        if (plans.empty())
            s.resultLog.push_back(Now() + (rollback ? " rollback" : " update") + ": nothing to do");
        for (const CVELMORA_UpdatePlans& plan : plans) {
            s.versionLog.push_back({plan.ProviderName, Now(), plan.VendorName, plan.UniqueName,
                                    plan.ModuleKind, plan.CurrentVendorVersion,
                                    plan.NextVendorVersion});
            s.resultLog.push_back(Now() + verb + plan.UniqueName + " " + plan.CurrentVendorVersion +
                                  " -> " + plan.NextVendorVersion);
            auto applied =
                std::find(s.appliedUpdates.begin(), s.appliedUpdates.end(), plan.UniqueName);
            if (!rollback) {
                s.appliedUpdates.push_back(plan.UniqueName);
            } else if (applied != s.appliedUpdates.end()) {
                s.appliedUpdates.erase(applied);
            }
        }
        return 0u;
    });
    EndBulk();
    if (reply.result == 0) {
        reply.body = std::string(wire::kRebootItem) +
                     std::to_string(plans.empty() ? 0 : scenario_.rebootAfterUpdate) + ";";
    }
    return reply;
}

Reply SomService::ExecuteReboot(const Request&) {
    return Persisted([&](State& s) {
        s.resultLog.push_back(Now() + " reboot requested");
        return 0u;
    });
}

Reply SomService::Relayed(const Request&) {
    return Reply{0, std::string(wire::kReturnValueItem) + "0;"};
}

// --- Providers ------------------------------------------------------------------------

Reply SomService::GetProviderManageInfo(const Request& request) {
    auto text = providerTexts_.find(request.className);
    if (text == providerTexts_.end())
        return Reply{kUnknownMethod, ""};
    return Reply{0, text->second};
}

Reply SomService::CheckUpdateModuleConformity(const Request& request) {
    Reply reply;
    qel::item::AppendItem(reply.body, qel::item::kTagClassArray, wire::kConformityList, "");
    for (const auto& provider : scenario_.deviceProviders) {
        if (provider.first != request.className && request.className != kUpdateManager)
            continue;
        for (const CVelmora_DeviceInfo& device : provider.second.DeviceInfo) {
            for (const CVelmora_ManageModuleInfo& module : device.ModuleInfo) {
                for (const CVelmora_ManageRepositoryInfo& entry : module.RepositoryInfo) {
                    AppendConformityEntry(reply.body, provider.second.ProviderName, &device,
                                          device.UniqueName, module, entry);
                }
            }
        }
    }
    return reply;
}

// --- Logs and versions --------------------------------------------------------------------

Reply SomService::CollectDownloadLog(const Request&) {
    return Reply{0, LinesBody(Snapshot().downloadLog)};
}

Reply SomService::CollectResultLog(const Request&) {
    return Reply{0, LinesBody(Snapshot().resultLog)};
}

Reply SomService::CollectVersionUpLog(const Request&) {
    return Reply{0, ListBody(Snapshot().versionLog)};
}

Reply SomService::CollectQelVersion(const Request&) {
    return Reply{0, ListBody(scenario_.versions)};
}

// --- Alive monitor --------------------------------------------------------------------------

Reply SomService::AliveUpdate(const Request&) {
    return Persisted([&](State& s) {
        s.alive = scenario_.aliveDefaults;
        return 0u;
    });
}

Reply SomService::AliveClear(const Request&) {
    return Persisted([&](State& s) {
        s.alive.clear();
        return 0u;
    });
}

Reply SomService::AliveSet(const Request& request) {
    const std::string name = Param(request.body, param::kName);
    const std::string value = Param(request.body, param::kValue);
    // The client sends both items raw, so a ';' inside a value cannot travel:
    // a body that is not exactly those two items is refused, never stored cut.
    const std::string exact = std::string("string;") + param::kName + ";" + name + ";string;" +
                              param::kValue + ";" + value + ";";
    if (name.empty() || request.body != exact)
        return Reply{kBadRequest, ""};
    return Persisted([&](State& s) {
        AliveParameter& parameter = s.alive[name];
        parameter.value = value;
        return 0u;
    });
}

Reply SomService::AliveGet(const Request& request) {
    const std::string name = Param(request.body, param::kName);
    State s = Snapshot();
    auto it = s.alive.find(name);
    if (it == s.alive.end())
        return Reply{kUnknownParameter, ""};
    Reply reply;
    qel::item::AppendStringItem(reply.body, param::kValue, it->second.value);
    qel::item::AppendIntItem(reply.body, param::kType, static_cast<int>(it->second.type));
    return reply;
}

}  // namespace somd
