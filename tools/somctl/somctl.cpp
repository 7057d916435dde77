#include "somctl.h"

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <thread>

#include "CFileUtility.h"
#include "CMofReader.h"
#include "CSomIf.h"
#include "common/record_json.h"
#include "output.h"

namespace somctl {
namespace {

const char kUpdateManager[] = "VELMORA_UpdateManager";
const char kMofFile[] = "/opt/velmora/qel/etc/qelvelmora.mof";
const char kDefaultAppKey[] = "somctl";

typedef std::vector<std::string> Args;

struct Context {
    CSomIf& som;
    Output& output;
    std::string appKey;
};

// A spinner on standard error while a long call waits; only on a terminal.
class Spinner {
  public:
    explicit Spinner(const std::string& what, bool enabled)
        : enabled_(enabled && isatty(STDERR_FILENO)) {
        if (!enabled_)
            return;
        thread_ = std::thread([this, what] {
            const char frames[] = "|/-\\";
            for (int i = 0; !stop_.load(); ++i) {
                std::fprintf(stderr, "\r%c %s...", frames[i % 4], what.c_str());
                std::fflush(stderr);
                std::this_thread::sleep_for(std::chrono::milliseconds(100));
            }
            std::fprintf(stderr, "\r\033[K");
            std::fflush(stderr);
        });
    }
    ~Spinner() {
        if (!enabled_)
            return;
        stop_ = true;
        thread_.join();
    }

  private:
    bool enabled_;
    std::atomic<bool> stop_{false};
    std::thread thread_;
};

// Applies name=value arguments to a record through its JSON form; the
// existing value's type decides how the text is read.
template <class Record>
bool ApplyAssignments(Record& record, const Args& args, std::size_t first, std::string& error) {
    nlohmann::json doc = record;
    for (std::size_t i = first; i < args.size(); ++i) {
        const std::string::size_type eq = args[i].find('=');
        const std::string name = args[i].substr(0, eq);
        if (eq == std::string::npos || !doc.contains(name)) {
            error = "unknown setting '" + name + "'";
            return false;
        }
        const std::string value = args[i].substr(eq + 1);
        nlohmann::json& field = doc[name];
        try {
            if (field.is_boolean()) {
                field = value == "true" || value == "1" || value == "yes";
            } else if (field.is_number()) {
                field = std::stoll(value);
            } else {
                field = value;
            }
        } catch (const std::exception&) {
            error = "'" + value + "' is not a number";
            return false;
        }
    }
    record = doc.get<Record>();
    return true;
}

nlohmann::json MaskedSetting(const CVELMORA_DownloadSetting& setting) {
    nlohmann::json doc = setting;
    doc["ProxyPassword"] = Masked(setting.ProxyPassword);
    doc["CacheServerPassword"] = Masked(setting.CacheServerPassword);
    return doc;
}

void PrintFields(Output& output, const nlohmann::json& doc) {
    Table table({"SETTING", "VALUE"});
    for (const auto& item : doc.items()) {
        table.Row({item.key(), item.value().is_string() ? item.value().get<std::string>()
                                                        : item.value().dump()});
    }
    output.Print(table);
}

// --- Commands ----------------------------------------------------------------

int Status(Context& c, const Args&) {
    LONG status = 0;
    c.som.GetQELStatus(status);
    const char* text = status == 0x8003   ? "downloading"
                       : status == 0x8002 ? "rolling back"
                       : status == 0x8001 ? "updating"
                                          : "idle";
    if (c.output.json()) {
        c.output.Json({{"ok", true}, {"status", text}, {"code", status}});
    } else {
        c.output.out() << "update process: " << text << "\n";
    }
    return kOk;
}

int Versions(Context& c, const Args&) {
    std::vector<CVELMORA_QelVersionInfo> versions;
    if (int rc = c.output.Result("versions", c.som.CollectQelVersion(versions)))
        return rc;
    if (c.output.json()) {
        c.output.Json({{"ok", true}, {"versions", versions}});
        return kOk;
    }
    Table table({"GROUP", "FILE", "VERSION"});
    for (const auto& v : versions)
        table.Row({v.GroupName, v.FileName, v.FileVersion});
    c.output.Print(table, "no versions reported");
    return kOk;
}

int Log(Context& c, const Args& args) {
    const std::string which = args.size() > 1 ? args[1] : "";
    if (which == "updates") {
        std::vector<CVELMORA_VersionUpdateLog> logs;
        if (int rc = c.output.Result("log updates", c.som.CollectVersionUpLog(logs)))
            return rc;
        if (c.output.json()) {
            c.output.Json({{"ok", true}, {"updates", logs}});
            return kOk;
        }
        Table table({"WHEN", "PROVIDER", "MODULE", "KIND", "BEFORE", "AFTER"});
        for (const auto& l : logs) {
            table.Row({l.DateTime, l.ProviderName, l.UniqueName, l.ModuleKind, l.BeforeVersion,
                       l.AfterVersion});
        }
        c.output.Print(table, "no updates logged");
        return kOk;
    }
    if (which != "download" && which != "result") {
        return c.output.Usage("log needs one of: download, result, updates");
    }
    std::vector<std::string> lines;
    HRESULT rc = which == "download" ? c.som.CollectDownloadLog(c.appKey, lines)
                                     : c.som.CollectResultLog(c.appKey, lines);
    if (int exit = c.output.Result("log " + which, rc))
        return exit;
    if (c.output.json()) {
        c.output.Json({{"ok", true}, {"lines", lines}});
    } else if (lines.empty()) {
        c.output.out() << "the " << which << " log is empty\n";
    } else {
        for (const std::string& line : lines)
            c.output.out() << line << "\n";
    }
    return kOk;
}

int Plans(Context& c, const Args& args) {
    bool rollback = false;
    std::string className = kUpdateManager;
    for (std::size_t i = 1; i < args.size(); ++i) {
        if (args[i] == "--rollback") {
            rollback = true;
        } else {
            className = args[i];
        }
    }
    std::vector<CVELMORA_UpdatePlans> plans;
    if (int rc = c.output.Result("plans", c.som.GetUpdatePlans(className, rollback, plans))) {
        return rc;
    }
    if (c.output.json()) {
        c.output.Json({{"ok", true}, {"rollback", rollback}, {"plans", plans}});
        return kOk;
    }
    Table table({"PROVIDER", "MODULE", "KIND", "FROM", "TO", "PRIORITY", "NAME"});
    for (const auto& p : plans) {
        table.Row({p.ProviderName, p.UniqueName, p.ModuleKind, p.CurrentVendorVersion,
                   p.NextVendorVersion, std::to_string(p.UpdatePriority), p.DisplayName});
    }
    c.output.Print(table, rollback ? "nothing to roll back" : "nothing to update");
    return kOk;
}

int DownloadSetting(Context& c, const Args& args) {
    CVELMORA_DownloadSetting setting;
    CVELMORA_DownloadSchedule schedule;
    if (int rc = c.output.Result("download-setting get",
                                 c.som.GetAutoDownloadSetting(setting, schedule))) {
        return rc;
    }
    if (args.size() > 1 && args[1] == "set") {
        std::string error;
        // Each name belongs to the setting or to the schedule.
        for (std::size_t i = 2; i < args.size(); ++i) {
            Args one{args[i]};
            nlohmann::json scheduleDoc = schedule;
            const std::string name = args[i].substr(0, args[i].find('='));
            bool ok = scheduleDoc.contains(name) ? ApplyAssignments(schedule, one, 0, error)
                                                 : ApplyAssignments(setting, one, 0, error);
            if (!ok)
                return c.output.Usage(error);
        }
        if (int rc = c.output.Result("download-setting set",
                                     c.som.SetAutoDownloadSetting(setting, schedule))) {
            return rc;
        }
        c.output.Message("download setting saved");
        return kOk;
    }
    if (c.output.json()) {
        c.output.Json({{"ok", true}, {"setting", MaskedSetting(setting)}, {"schedule", schedule}});
        return kOk;
    }
    nlohmann::json doc = MaskedSetting(setting);
    doc.update(nlohmann::json(schedule));
    PrintFields(c.output, doc);
    return kOk;
}

int UpdateSetting(Context& c, const Args& args) {
    CVELMORA_UpdateSchedule schedule;
    if (int rc = c.output.Result("update-setting get", c.som.GetAutoUpdateSetting(schedule))) {
        return rc;
    }
    if (args.size() > 1 && args[1] == "set") {
        std::string error;
        if (!ApplyAssignments(schedule, args, 2, error))
            return c.output.Usage(error);
        if (int rc = c.output.Result("update-setting set", c.som.SetAutoUpdateSetting(schedule))) {
            return rc;
        }
        c.output.Message("update schedule saved");
        return kOk;
    }
    if (c.output.json()) {
        c.output.Json({{"ok", true}, {"schedule", schedule}});
    } else {
        PrintFields(c.output, schedule);
    }
    return kOk;
}

int Priority(Context& c, const Args& args) {
    if (args.size() < 3 || args[1] != "set") {
        return c.output.Usage("usage: priority set CLASS name=value...");
    }
    CVelmora_PriorityUpdateParam param;
    param.AppKey = c.appKey;
    std::string error;
    if (!ApplyAssignments(param, args, 3, error))
        return c.output.Usage(error);
    if (int rc = c.output.Result("priority set", c.som.SetUpdatePriority(args[2], param)))
        return rc;
    c.output.Message("priority saved");
    return kOk;
}

int Authority(Context& c, const Args& args) {
    if (args.size() < 2 || (args[1] != "take" && args[1] != "release")) {
        return c.output.Usage("usage: authority take|release [CLASS]");
    }
    const std::string className = args.size() > 2 ? args[2] : kUpdateManager;
    const bool take = args[1] == "take";
    HRESULT rc = take ? c.som.GetOperatingAuthority(className, c.appKey)
                      : c.som.ReleaseOperatingAuthority(className, c.appKey);
    if (int exit = c.output.Result("authority " + args[1], rc))
        return exit;
    c.output.Message(std::string("operating authority ") + (take ? "held by " : "released by ") +
                     c.appKey);
    return kOk;
}

int Bulk(Context& c, const Args& args) {
    const std::string what = args[0];
    HRESULT rc = 0;
    LONG reboot = 0;
    {
        Spinner spinner(what, !c.output.json());
        if (what == "download") {
            CVELMORA_DownloadSetting setting;
            CVELMORA_DownloadSchedule schedule;
            rc = c.som.GetAutoDownloadSetting(setting, schedule);
            if (static_cast<uint32_t>(rc) == 0)
                rc = c.som.DownloadAll(setting);
        } else if (what == "update") {
            rc = c.som.UpdateAll(reboot);
        } else if (what == "rollback") {
            rc = c.som.RollbackAll(reboot);
        } else {
            rc = c.som.ExecuteReboot();
        }
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

template <class Info, class Item, class Row>
int PrintProvider(Context& c, const Info& info, const std::vector<Item>& items, Table table,
                  Row row) {
    if (c.output.json()) {
        c.output.Json({{"ok", true}, {"provider", info}});
        return kOk;
    }
    c.output.out() << info.ProviderName << " " << info.ProviderVersion << " ("
                   << info.ProviderVendorName << ")\n";
    for (const Item& item : items) {
        for (const auto& module : item.ModuleInfo)
            table.Row(row(item, module));
    }
    c.output.Print(table, "no devices or tools reported");
    return kOk;
}

int Providers(Context& c, const Args& args) {
    if (args.size() < 3 || (args[1] != "device" && args[1] != "tool")) {
        return c.output.Usage("usage: providers device|tool CLASS");
    }
    if (args[1] == "device") {
        CVelmora_DevProviderManageInfo info;
        if (int rc = c.output.Result("providers", c.som.GetProviderManageInfo(args[2], info))) {
            return rc;
        }
        return PrintProvider(
            c, info, info.DeviceInfo,
            Table({"DEVICE", "ID", "NAME", "VENDOR", "MODULE", "KIND", "PACKAGES"}),
            [](const CVelmora_DeviceInfo& d, const CVelmora_ManageModuleInfo& m) {
                return std::vector<std::string>{d.UniqueName,
                                                d.DeviceId,
                                                d.DeviceName,
                                                d.DeviceVendorName,
                                                m.ModuleName,
                                                m.ModuleKind,
                                                std::to_string(m.RepositoryInfo.size())};
            });
    }
    CVelmora_ToolProviderManageInfo info;
    if (int rc = c.output.Result("providers", c.som.GetProviderManageInfo(args[2], info)))
        return rc;
    return PrintProvider(c, info, info.ToolInfo, Table({"TOOL", "MODULE", "KIND", "PACKAGES"}),
                         [](const CVelmora_ToolInfo& t, const CVelmora_ManageModuleInfo& m) {
                             return std::vector<std::string>{
                                 t.UniqueName, m.ModuleName, m.ModuleKind,
                                 std::to_string(m.RepositoryInfo.size())};
                         });
}

std::vector<CMofContents> MofInstances() {
    CMofReader reader(CFileUtility::SystemPath(kMofFile));
    reader.ParseContents();
    std::vector<CMofContents> instances;
    reader.GetMofContents(instances);
    return instances;
}

int Services(Context& c, const Args& args) {
    if (args.size() < 2 || (args[1] != "device" && args[1] != "tool" && args[1] != "alive")) {
        return c.output.Usage("usage: services device|tool|alive");
    }
    if (args[1] == "alive") {
        nlohmann::json doc = nlohmann::json::array();
        Table table({"SERVICE", "CLASS", "ALIVE"});
        for (const CMofContents& instance : MofInstances()) {
            if (instance.Kind != 1)
                continue;
            const bool alive = c.som.isDeviceAlive(instance);
            doc.push_back(
                {{"service", instance.Name}, {"class", instance.ClassName}, {"alive", alive}});
            table.Row({instance.Name, instance.ClassName, alive ? "yes" : "no"});
        }
        if (c.output.json()) {
            c.output.Json({{"ok", true}, {"services", doc}});
        } else {
            c.output.Print(table, "no device services registered");
        }
        return kOk;
    }
    strpairvect_t services;
    if (args[1] == "device") {
        c.som.GetDeviceService(services);
    } else {
        c.som.GetToolService(services);
    }
    if (c.output.json()) {
        nlohmann::json doc = nlohmann::json::array();
        for (const auto& s : services)
            doc.push_back({{"service", s.first}, {"class", s.second}});
        c.output.Json({{"ok", true}, {"services", doc}});
        return kOk;
    }
    Table table({"SERVICE", "CLASS"});
    for (const auto& s : services)
        table.Row({s.first, s.second});
    c.output.Print(table, "no services registered");
    return kOk;
}

int Monitor(Context& c, const Args& args) {
    const std::string verb = args.size() > 1 ? args[1] : "";
    if (verb == "get" && args.size() == 3) {
        std::string value;
        unsigned type = 0;
        if (int rc = c.output.Result("monitor get",
                                     c.som.AliveMonitorGetParameter(args[2], value, type))) {
            return rc;
        }
        if (c.output.json()) {
            c.output.Json({{"ok", true}, {"name", args[2]}, {"value", value}, {"type", type}});
        } else {
            c.output.out() << args[2] << " = " << value << " (type " << type << ")\n";
        }
        return kOk;
    }
    HRESULT rc = 0;
    std::string done;
    if (verb == "set" && args.size() == 4) {
        rc = c.som.AliveMonitorSetParameter(args[2], args[3]);
        done = args[2] + " set";
    } else if (verb == "clear" && args.size() == 2) {
        rc = c.som.AliveMonitorClearParameters();
        done = "parameters cleared";
    } else if (verb == "reload" && args.size() == 2) {
        rc = c.som.AliveMonitorUpdateParameters();
        done = "parameters reloaded";
    } else {
        return c.output.Usage("usage: monitor get NAME | set NAME VALUE | clear | reload");
    }
    if (int exit = c.output.Result("monitor " + verb, rc))
        return exit;
    c.output.Message(done);
    return kOk;
}

int Name(Context& c, const Args& args) {
    if (args.size() != 2)
        return c.output.Usage("usage: name DEVICE-ID");
    CVelmora_DeviceInfo device;
    device.DeviceId = args[1];
    c.som.GetDeviceName(device);
    if (c.output.json()) {
        c.output.Json({{"ok", true},
                       {"id", device.DeviceId},
                       {"name", device.DeviceName},
                       {"vendor", device.DeviceVendorName}});
    } else if (device.DeviceName.empty() && device.DeviceVendorName.empty()) {
        c.output.out() << args[1] << ": not in the PCI ID database\n";
    } else {
        c.output.out() << args[1] << ": " << device.DeviceVendorName << " " << device.DeviceName
                       << "\n";
    }
    return kOk;
}

int Exec(Context& c, const Args& args) {
    if (args.size() < 3)
        return c.output.Usage("usage: exec CLASS METHOD [name=value...]");
    IWbemClassObject in;
    for (std::size_t i = 3; i < args.size(); ++i) {
        const std::string::size_type eq = args[i].find('=');
        if (eq == std::string::npos)
            return c.output.Usage("'" + args[i] + "' is not name=value");
        in.push(args[i].substr(0, eq), args[i].substr(eq + 1));
    }
    IWbemClassObject* out = nullptr;
    std::vector<char> className(args[1].begin(), args[1].end());
    className.push_back('\0');
    std::vector<char> method(args[2].begin(), args[2].end());
    method.push_back('\0');
    HRESULT rc = c.som.ExecMethod(className.data(), method.data(), 0, nullptr, &in, &out, nullptr);
    std::unique_ptr<IWbemClassObject> owned(out);
    if (int exit = c.output.Result("exec " + args[2], rc))
        return exit;
    nlohmann::json doc = nlohmann::json::object();
    for (const auto& entry : *out) {
        const boost::any& value = entry.second;
        if (const auto* s = boost::any_cast<std::string>(&value)) {
            doc[entry.first] = *s;
        } else if (const auto* l = boost::any_cast<long>(&value)) {
            doc[entry.first] = *l;
        } else if (const auto* i = boost::any_cast<int>(&value)) {
            doc[entry.first] = *i;
        } else if (const auto* b = boost::any_cast<bool>(&value)) {
            doc[entry.first] = *b;
        } else if (const auto* v = boost::any_cast<std::vector<std::string>>(&value)) {
            doc[entry.first] = *v;
        } else {
            doc[entry.first] = "(object)";
        }
    }
    if (c.output.json()) {
        c.output.Json({{"ok", true}, {"output", doc}});
    } else {
        PrintFields(c.output, doc);
    }
    return kOk;
}

struct Command {
    const char* name;
    const char* synopsis;
    int (*run)(Context&, const Args&);
};

const Command kCommands[] = {
    {"status", "status                       what the update process is doing", Status},
    {"versions", "versions                     installed versions", Versions},
    {"log", "log download|result|updates  the service's logs", Log},
    {"plans", "plans [--rollback] [CLASS]   pending updates (or rollbacks)", Plans},
    {"download-setting", "download-setting [set NAME=VALUE...]  automatic download",
     DownloadSetting},
    {"update-setting", "update-setting [set NAME=VALUE...]    automatic update", UpdateSetting},
    {"priority", "priority set CLASS NAME=VALUE...        update priority of a module", Priority},
    {"authority", "authority take|release [CLASS]  operating authority", Authority},
    {"download", "download                     download all pending updates", Bulk},
    {"update", "update                       apply all pending updates", Bulk},
    {"rollback", "rollback                     roll back the applied updates", Bulk},
    {"reboot", "reboot                       reboot after an update", Bulk},
    {"providers", "providers device|tool CLASS  what a provider manages", Providers},
    {"services", "services device|tool|alive   registered services", Services},
    {"monitor", "monitor get NAME|set NAME VALUE|clear|reload  alive monitor", Monitor},
    {"name", "name DEVICE-ID               name a device from the PCI ID database", Name},
    {"exec", "exec CLASS METHOD [NAME=VALUE...]  call any method", Exec},
};

void Help(std::ostream& out) {
    out << "usage: somctl [--json] [--app-key KEY] COMMAND [ARGS]\n\n"
           "Operates the SOM service through libqel_SomIf.\n\ncommands:\n";
    for (const Command& command : kCommands)
        out << "  " << command.synopsis << "\n";
    out << "\nexit codes: 0 ok, 2 usage, 3 service not reachable, 4 no reply, 5 service error\n";
}

}  // namespace

int RunSomctl(const std::vector<std::string>& allArgs, std::ostream& out, std::ostream& err) {
    bool json = false;
    std::string appKey = kDefaultAppKey;
    Args args;
    for (std::size_t i = 0; i < allArgs.size(); ++i) {
        if (allArgs[i] == "--json") {
            json = true;
        } else if (allArgs[i] == "--app-key" && i + 1 < allArgs.size()) {
            appKey = allArgs[++i];
        } else {
            args.push_back(allArgs[i]);
        }
    }
    Output output(out, err, json);
    if (args.empty() || args[0] == "--help" || args[0] == "-h" || args[0] == "help") {
        Help(out);
        return args.empty() ? kUsage : kOk;
    }
    for (const Command& command : kCommands) {
        if (args[0] != command.name)
            continue;
        if (args.size() > 1 && (args[1] == "--help" || args[1] == "-h")) {
            out << "usage: somctl " << command.synopsis << "\n";
            return kOk;
        }
        CSomIf som("somctl");
        Context context{som, output, appKey};
        return command.run(context, args);
    }
    return output.Usage("unknown command '" + args[0] + "'");
}

}  // namespace somctl
