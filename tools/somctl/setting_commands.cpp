// Automatic download and update settings, update priorities and plans.
#include <termios.h>
#include <unistd.h>

#include <cstdio>
#include <iostream>

#include "commands.h"
#include "common/protocol.h"
#include "common/record_json.h"
#include "values.h"

namespace somctl {
namespace {

nlohmann::json MaskedSetting(const CVELMORA_DownloadSetting& setting) {
    nlohmann::json doc = setting;
    for (const char* name : qel::protocol::kSecretItems)
        doc[name] = Masked(doc[name].get<std::string>());
    return doc;
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
        for (const char* name : qel::protocol::kSecretItems) {
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

// Each name belongs to the setting or to the schedule.
bool ApplyDownloadAssignments(CVELMORA_DownloadSetting& setting,
                              CVELMORA_DownloadSchedule& schedule, const Args& args,
                              std::string& error) {
    const nlohmann::json scheduleDoc = schedule;
    for (std::size_t i = 2; i < args.size(); ++i) {
        const Args one{args[i]};
        const bool inSchedule = scheduleDoc.contains(args[i].substr(0, args[i].find('=')));
        if (!(inSchedule ? ApplyAssignments(schedule, one, 0, error)
                         : ApplyAssignments(setting, one, 0, error))) {
            return false;
        }
    }
    return true;
}

// "COMMAND" shows the record, "COMMAND set NAME=VALUE..." changes it.
bool IsSet(const Args& args) {
    return args.size() > 2 && args[1] == "set";
}

}  // namespace

int DownloadSetting(Context& c, const Args& given) {
    if (given.size() > 1 && !IsSet(given))
        return c.output.Usage("usage: somctl download-setting [set NAME=VALUE...]");
    Args args = given;
    std::string error;
    if (!ReadSecretsFromInput(args, error))
        return c.output.Usage(error);
    const bool set = IsSet(args);
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
        if (!ApplyDownloadAssignments(setting, schedule, args, error))
            return c.output.Usage(error);
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
    c.output.Fields(doc);
    return kOk;
}

int UpdateSetting(Context& c, const Args& args) {
    const bool set = IsSet(args);
    if (args.size() > 1 && !set)
        return c.output.Usage("usage: somctl update-setting [set NAME=VALUE...]");
    ChangeGuard guard(c);
    if (set) {
        if (int rc = guard.Acquire("update-setting set"))
            return rc;
    }
    CVELMORA_UpdateSchedule schedule;
    if (int rc = c.output.Result("update-setting get", c.som.GetAutoUpdateSetting(schedule)))
        return rc;
    if (set) {
        std::string error;
        if (!ApplyAssignments(schedule, args, 2, error))
            return c.output.Usage(error);
        if (int rc = c.output.Result("update-setting set", c.som.SetAutoUpdateSetting(schedule)))
            return rc;
        c.output.Message("update schedule saved");
        return kOk;
    }
    if (c.output.json()) {
        c.output.Json({{"ok", true}, {"schedule", schedule}});
    } else {
        c.output.Fields(schedule);
    }
    return kOk;
}

int Priority(Context& c, const Args& args) {
    if (args.size() < 4 || args[1] != "set")
        return c.output.Usage("usage: somctl priority set CLASS NAME=VALUE...");
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

int Plans(Context& c, const Args& args) {
    bool rollback = false;
    bool named = false;
    std::string className = qel::protocol::kUpdateManager;
    for (std::size_t i = 1; i < args.size(); ++i) {
        if (args[i] == "--rollback") {
            rollback = true;
        } else if (args[i].empty() || args[i][0] == '-' || named) {
            return c.output.Usage("usage: somctl plans [--rollback] [CLASS]");
        } else {
            className = args[i];
            named = true;
        }
    }
    std::vector<CVELMORA_UpdatePlans> plans;
    if (int rc = c.output.Result("plans", c.som.GetUpdatePlans(className, rollback, plans)))
        return rc;
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

}  // namespace somctl
