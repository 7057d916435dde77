#include "somctl.h"

#include <fcntl.h>
#include <sys/file.h>
#include <termios.h>
#include <unistd.h>

#include <atomic>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <cstdio>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>
#include <thread>

#include "CFileUtility.h"
#include "CMofReader.h"
#include "CResultCode.h"
#include "CSomIf.h"
#include "common/record_json.h"
#include "output.h"
#include "somif/wire.h"

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
    bool yes;  // --yes: act without asking on a terminal
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

// Reads a whole decimal integer within [low, high]; no trailing text, no overflow.
bool ParseInteger(const std::string& text, long long low, long long high, long long& value) {
    if (text.empty() || std::isspace(static_cast<unsigned char>(text[0])))
        return false;
    errno = 0;
    char* end = nullptr;
    value = std::strtoll(text.c_str(), &end, 10);
    return errno == 0 && *end == '\0' && value >= low && value <= high;
}

bool IsTimeOfDay(const std::string& text) {
    long long hours = 0, minutes = 0;
    return text.size() == 5 && text[2] == ':' &&
           std::isdigit(static_cast<unsigned char>(text[0])) &&
           std::isdigit(static_cast<unsigned char>(text[3])) &&
           ParseInteger(text.substr(0, 2), 0, 23, hours) &&
           ParseInteger(text.substr(3, 2), 0, 59, minutes);
}

bool IsDayName(const std::string& text) {
    static const char* const kDays[] = {"Monday", "Tuesday",  "Wednesday", "Thursday",
                                        "Friday", "Saturday", "Sunday"};
    for (const char* day : kDays) {
        if (text == day)
            return true;
    }
    return false;
}

// Checks one value against what its field accepts; on failure names both.
bool CheckValue(const std::string& name, const std::string& value, nlohmann::json& field,
                std::string& error) {
    long long number = 0;
    if (field.is_boolean()) {
        if (value != "true" && value != "false") {
            error = name + " accepts true or false, not '" + value + "'";
            return false;
        }
        field = value == "true";
    } else if (field.is_number_unsigned()) {
        if (!ParseInteger(value, 0, UINT_MAX, number)) {
            error = name + " accepts a whole number from 0 to " + std::to_string(UINT_MAX);
            return false;
        }
        field = static_cast<unsigned>(number);
    } else if (field.is_number()) {
        if (!ParseInteger(value, INT_MIN, INT_MAX, number)) {
            error = name + " accepts a whole number from " + std::to_string(INT_MIN) + " to " +
                    std::to_string(INT_MAX);
            return false;
        }
        field = static_cast<int>(number);
    } else if (name == "Time" && !value.empty() && !IsTimeOfDay(value)) {
        error = "Time accepts HH:MM (00:00 to 23:59), not '" + value + "'";
        return false;
    } else if (name == "DayOfWeek" && !value.empty() && !IsDayName(value)) {
        error = "DayOfWeek accepts Monday to Sunday, not '" + value + "'";
        return false;
    } else if (name == "ProxyPort" && !value.empty() && !ParseInteger(value, 1, 65535, number)) {
        error = "ProxyPort accepts a port from 1 to 65535, not '" + value + "'";
        return false;
    } else {
        field = value;
    }
    return true;
}

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
        if (!CheckValue(name, args[i].substr(eq + 1), doc[name], error))
            return false;
    }
    record = doc.get<Record>();
    return true;
}

// Held around every change. The operating authority is a lock that applications
// honour: a change refuses while another key holds it, and otherwise takes it for
// this key for the change's length (keeping it when this key held it already).
// Two somctl runs with the same key pass that check together, so the
// read-modify-write of a record is also serialised by an flock on socket.conf,
// a file every somctl of the installation can open and that nobody rewrites.
class ChangeGuard {
  public:
    explicit ChangeGuard(Context& c) : c_(c) {}
    ~ChangeGuard() {
        if (tookAuthority_)
            c_.som.ReleaseOperatingAuthority(kUpdateManager, c_.appKey);
        if (lockFd_ >= 0)
            close(lockFd_);  // releases the flock
    }
    ChangeGuard(const ChangeGuard&) = delete;
    ChangeGuard& operator=(const ChangeGuard&) = delete;

    // 0 when the change may go ahead, else the exit code already reported.
    int Acquire(const std::string& operation) {
        lockFd_ =
            open(CFileUtility::SystemPath(qel::wire::kSocketConfig).c_str(), O_RDONLY | O_CLOEXEC);
        if (lockFd_ >= 0) {
            while (flock(lockFd_, LOCK_EX) != 0 && errno == EINTR) {
            }
        }
        // Releasing with a key nobody uses tells whether anyone holds it, changing nothing.
        const HRESULT probe = c_.som.ReleaseOperatingAuthority(
            kUpdateManager, "somctl-probe-" + std::to_string(getpid()));
        if (CResultCode::IsTransport(static_cast<uint32_t>(probe)))
            return c_.output.Result(operation, probe);
        const HRESULT taken = c_.som.GetOperatingAuthority(kUpdateManager, c_.appKey);
        if (static_cast<uint32_t>(taken) == CResultCode::kAuthorityHeld) {
            return c_.output.Fail(operation, CResultCode::kAuthorityHeld,
                                  "refused: another application key holds the operating "
                                  "authority (this run uses '" +
                                      c_.appKey + "')",
                                  kServiceError);
        }
        if (int rc = c_.output.Result(operation, taken))
            return rc;
        tookAuthority_ = probe == 0;
        return kOk;
    }

  private:
    Context& c_;
    int lockFd_ = -1;
    bool tookAuthority_ = false;
};

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

int Status(Context& c, const Args& args) {
    if (args.size() > 1)
        return c.output.Usage("usage: somctl status");
    LONG status = 0;
    c.som.GetQELStatus(status);
    std::vector<CVELMORA_QelVersionInfo> versions;  // any cheap call tells whether it answers
    if (int rc = c.output.Result("status", c.som.CollectQelVersion(versions)))
        return rc;
    const char* text = status == 0x8003   ? "downloading"
                       : status == 0x8002 ? "rolling back"
                       : status == 0x8001 ? "updating"
                                          : "idle";
    if (c.output.json()) {
        c.output.Json({{"ok", true}, {"service", "answering"}, {"status", text}, {"code", status}});
    } else {
        c.output.out() << "service: answering\nupdate process: " << text << "\n";
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
    bool named = false;
    std::string className = kUpdateManager;
    for (std::size_t i = 1; i < args.size(); ++i) {
        if (args[i] == "--rollback") {
            rollback = true;
        } else if (args[i].empty() || args[i][0] == '-' || named) {
            return c.output.Usage("usage: plans [--rollback] [CLASS]");
        } else {
            className = args[i];
            named = true;
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

// Reads one line from standard input, without echo when it is a terminal.
bool ReadSecret(const std::string& name, std::string& secret) {
    termios saved{};
    const bool terminal = isatty(STDIN_FILENO) && tcgetattr(STDIN_FILENO, &saved) == 0;
    if (terminal) {
        std::fprintf(stderr, "%s: ", name.c_str());
        termios quiet = saved;
        quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &quiet);
    }
    const bool ok = static_cast<bool>(std::getline(std::cin, secret));
    if (terminal) {
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &saved);
        std::fprintf(stderr, "\n");
    }
    return ok;
}

// "ProxyPassword=-" (or CacheServerPassword) takes the password from standard
// input or a no-echo prompt, so it stays out of `ps` and the shell's history.
bool ReadSecretsFromInput(Args& args, std::string& error) {
    for (std::string& arg : args) {
        for (const char* name : {"ProxyPassword", "CacheServerPassword"}) {
            if (arg != std::string(name) + "=-")
                continue;
            std::string secret;
            if (!ReadSecret(name, secret)) {
                error = std::string(name) + "=- found no line on standard input";
                return false;
            }
            arg = std::string(name) + "=" + secret;
        }
    }
    return true;
}

int DownloadSetting(Context& c, const Args& given) {
    Args args = given;
    std::string inputError;
    if (!ReadSecretsFromInput(args, inputError))
        return c.output.Usage(inputError);
    const bool set = args.size() > 1 && args[1] == "set";
    if (args.size() > 1 && !set)
        return c.output.Usage("usage: download-setting [set NAME=VALUE...]");
    ChangeGuard guard(c);
    if (set) {
        if (int rc = guard.Acquire("download-setting set"))
            return rc;
    }
    CVELMORA_DownloadSetting setting;
    CVELMORA_DownloadSchedule schedule;
    if (int rc = c.output.Result("download-setting get",
                                 c.som.GetAutoDownloadSetting(setting, schedule))) {
        return rc;
    }
    if (set) {
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
    const bool set = args.size() > 1 && args[1] == "set";
    if (args.size() > 1 && !set)
        return c.output.Usage("usage: update-setting [set NAME=VALUE...]");
    ChangeGuard guard(c);
    if (set) {
        if (int rc = guard.Acquire("update-setting set"))
            return rc;
    }
    CVELMORA_UpdateSchedule schedule;
    if (int rc = c.output.Result("update-setting get", c.som.GetAutoUpdateSetting(schedule))) {
        return rc;
    }
    if (set) {
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
    if (args.size() < 4 || args[1] != "set") {
        return c.output.Usage("usage: priority set CLASS NAME=VALUE...");
    }
    CVelmora_PriorityUpdateParam param;
    param.AppKey = c.appKey;
    std::string error;
    if (!ApplyAssignments(param, args, 3, error))
        return c.output.Usage(error);
    ChangeGuard guard(c);
    if (int rc = guard.Acquire("priority set"))
        return rc;
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

// On a terminal, asks before an action that cannot be taken back.
bool Confirmed(Context& c, const std::string& what) {
    if (c.yes || !isatty(STDIN_FILENO) || !isatty(STDERR_FILENO))
        return true;
    std::fprintf(stderr, "%s now? [y/N] ", what.c_str());
    std::string answer;
    return std::getline(std::cin, answer) && (answer == "y" || answer == "yes");
}

int Bulk(Context& c, const Args& args) {
    const std::string what = args[0];
    if (args.size() > 1)
        return c.output.Usage("usage: somctl " + what);
    if (what != "download" && !Confirmed(c, what))
        return c.output.Usage(what + " not confirmed (--yes acts without asking)");
    HRESULT rc = 0;
    LONG reboot = 0;
    ChangeGuard guard(c);
    if (int exit = guard.Acquire(what))
        return exit;
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

bool IsRegistered(const strpairvect_t& services, const std::string& className) {
    for (const auto& service : services) {
        if (service.second == className)
            return true;
    }
    return false;
}

// The registered services say which classes are device and which tool providers.
int CheckProviderClass(Context& c, const std::string& kind, const std::string& className) {
    strpairvect_t devices, tools;
    c.som.GetDeviceService(devices);
    c.som.GetToolService(tools);
    const bool device = IsRegistered(devices, className);
    const bool tool = IsRegistered(tools, className);
    if ((kind == "device" && device) || (kind == "tool" && tool))
        return kOk;
    if (device || tool) {
        return c.output.Usage(className + " is a " + (device ? "device" : "tool") +
                              " provider, not a " + kind + " provider");
    }
    return c.output.Usage("no " + kind + " provider class '" + className + "' is registered");
}

int Providers(Context& c, const Args& args) {
    if (args.size() < 3 || (args[1] != "device" && args[1] != "tool")) {
        return c.output.Usage("usage: providers device|tool CLASS");
    }
    if (int rc = CheckProviderClass(c, args[1], args[2]))
        return rc;
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

bool IsHex(const std::string& text, std::size_t from, std::size_t count) {
    for (std::size_t i = from; i < from + count; ++i) {
        if (i >= text.size() || !std::isxdigit(static_cast<unsigned char>(text[i])))
            return false;
    }
    return true;
}

// The library names a device from the hex numbers at offsets 8 and 13 and names
// every identifier without "-" after the firmware ("BIOS/EFI") or the BMC, so a
// "8086:1533" would be named "BIOS/EFI": only the dashed form is accepted.
bool IsDeviceId(const std::string& id) {
    return id.size() >= 17 && id[7] == '-' && id[12] == '-' && IsHex(id, 8, 4) && IsHex(id, 13, 4);
}

int Name(Context& c, const Args& args) {
    if (args.size() != 2)
        return c.output.Usage("usage: name DEVICE-ID");
    if (!IsDeviceId(args[1])) {
        return c.output.Usage(
            "DEVICE-ID accepts PREFIX-VVVV-DDDD... (vendor and device in hex at "
            "offsets 8 and 13, e.g. PCIROOT-8086-1533-0000), not '" +
            args[1] + "'");
    }
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
    const auto returned = doc.find("ReturnValue");
    const bool failed = returned != doc.end() && returned->is_number() && *returned != 0;
    if (c.output.json()) {
        c.output.Json({{"ok", !failed}, {"output", doc}});
    } else {
        PrintFields(c.output, doc);
    }
    if (failed && !c.output.json())
        c.output.Fail("exec " + args[2], 0, "the method returned " + returned->dump(),
                      kServiceError);
    return failed ? kServiceError : kOk;
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

const char kVersion[] = "somctl 1.0.0";

void Help(std::ostream& out) {
    out << "usage: somctl [--json] [--app-key KEY] COMMAND [ARGS]\n\n"
           "Operates the SOM service through libqel_SomIf.\n\ncommands:\n";
    for (const Command& command : kCommands)
        out << "  " << command.synopsis << "\n";
    out << "\noptions: --json, --app-key KEY, --yes, --version, --help\n"
           "exit codes: 0 ok, 2 usage or invalid value, 3 service not reachable, 4 no reply, "
           "5 service error\n";
}

// An application key travels as an item of the wire text: no item separator,
// no control bytes, nothing that is not printable ASCII.
bool IsSendableKey(const std::string& key) {
    if (key.empty())
        return false;
    for (unsigned char ch : key) {
        if (ch < 0x21 || ch > 0x7e || ch == ';')
            return false;
    }
    return true;
}

// Shows text (help, version) as is, or inside a JSON document.
int Show(Output& output, const std::string& key, const std::string& text, int code) {
    if (output.json())
        output.Json({{"ok", code == kOk}, {key, text}});
    else
        output.out() << text;
    return code;
}

}  // namespace

int RunSomctl(const std::vector<std::string>& allArgs, std::ostream& out, std::ostream& err) {
    bool json = false;
    bool yes = false;
    std::string appKey = kDefaultAppKey;
    std::string problem;
    Args args;
    for (std::size_t i = 0; i < allArgs.size(); ++i) {
        const std::string& arg = allArgs[i];
        if (!args.empty()) {
            args.push_back(arg);  // the command's own arguments
        } else if (arg == "--json") {
            json = true;
        } else if (arg == "--yes") {
            yes = true;
        } else if (arg == "--app-key") {
            if (i + 1 >= allArgs.size() || allArgs[i + 1].empty() || allArgs[i + 1][0] == '-') {
                problem = "--app-key needs a value";
            } else {
                appKey = allArgs[++i];
                if (!IsSendableKey(appKey))
                    problem = "--app-key accepts printable ASCII without blanks or ';'";
            }
        } else if (arg == "--version" || arg == "--help" || arg == "-h" || arg == "help") {
            args.push_back(arg);
        } else if (!arg.empty() && arg[0] == '-') {
            problem = problem.empty() ? "unknown option '" + arg + "'" : problem;
        } else {
            args.push_back(arg);
        }
    }
    Output output(out, err, json);
    if (!problem.empty())
        return output.Usage(problem);
    std::ostringstream help;
    Help(help);
    if (args.empty())
        return Show(output, "usage", help.str(), kUsage);
    if (args[0] == "--version")
        return Show(output, "version", std::string(kVersion) + "\n", kOk);
    if (args[0] == "--help" || args[0] == "-h" || args[0] == "help")
        return Show(output, "usage", help.str(), kOk);
    for (const Command& command : kCommands) {
        if (args[0] != command.name)
            continue;
        if (args.size() > 1 && (args[1] == "--help" || args[1] == "-h")) {
            return Show(output, "usage", std::string("usage: somctl ") + command.synopsis + "\n",
                        kOk);
        }
        CSomIf som("somctl");
        Context context{som, output, appKey, yes};
        return command.run(context, args);
    }
    return output.Usage("unknown command '" + args[0] + "'");
}

}  // namespace somctl
