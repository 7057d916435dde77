// somctl's front: the global options, the command table and the dispatch.
// Each family of commands lives in a file of its own (commands.h).
#include "somctl.h"

#include <iostream>
#include <sstream>

#include "CSomIf.h"
#include "commands.h"
#ifdef QEL_SOMCTL_RECORDING
#include "record_commands.h"
#endif
#include "values.h"

namespace somctl {
namespace {

const char kDefaultAppKey[] = "somctl";
const char kVersion[] = "somctl 1.0.0";

struct Command {
    const char* name;
    const char* synopsis;
    int (*run)(Context&, const Args&);
};

const Command kCommands[] = {
    {"status", "status                       whether the service answers, what it is doing",
     Status},
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
#ifdef QEL_SOMCTL_RECORDING
    // Recording and replay (record_commands.cpp).
    {"record", "record FILE -- COMMAND [ARGS]  run a command with its exchanges recorded",
     [](Context& c, const Args& a) { return RecordCommand(c.output, a, c.appKey, c.yes); }},
    {"replay-check", "replay-check FILE            send a recording's requests, compare replies",
     [](Context& c, const Args& a) { return ReplayCheckCommand(c.output, a); }},
#endif
};

std::string Help() {
    std::ostringstream out;
    out << "usage: somctl [--json] [--yes] [--app-key KEY] COMMAND [ARGS]\n\n"
           "Operates the SOM service through libqel_SomIf.\n\ncommands:\n";
    for (const Command& command : kCommands)
        out << "  " << command.synopsis << "\n";
    out << "\noptions: --json, --app-key KEY, --yes, --version, --help; COMMAND --help\n"
           "exit codes: 0 done, 2 usage or invalid value, 3 service not reachable, 4 no reply "
           "within the time-out, 5 the service answered with an error\n";
    return out.str();
}

// Shows text (help, version) as is, or inside a JSON document.
int Show(Output& output, const std::string& key, const std::string& text, int code) {
    if (output.json())
        output.Json({{"ok", code == kOk}, {key, text}});
    else
        output.out() << text;
    return code;
}

bool IsHelp(const std::string& arg) {
    return arg == "--help" || arg == "-h" || arg == "help";
}

struct Options {
    bool json = false;
    bool yes = false;
    std::string appKey = kDefaultAppKey;
    std::string problem;  // the first usage error
    Args command;         // the command's name and arguments
};

// Options come before the command; everything after its name is its own.
Options ParseOptions(const std::vector<std::string>& all) {
    Options options;
    for (std::size_t i = 0; i < all.size(); ++i) {
        const std::string& arg = all[i];
        std::string problem;
        if (!options.command.empty() || IsHelp(arg) || arg == "--version") {
            options.command.push_back(arg);
        } else if (arg == "--json") {
            options.json = true;
        } else if (arg == "--yes") {
            options.yes = true;
        } else if (arg == "--app-key") {
            if (i + 1 >= all.size() || all[i + 1].empty() || all[i + 1][0] == '-') {
                problem = "--app-key needs a value";
            } else {
                options.appKey = all[++i];
                if (!IsSendableKey(options.appKey))
                    problem = "--app-key accepts printable ASCII without blanks or ';'";
            }
        } else if (!arg.empty() && arg[0] == '-') {
            problem = "unknown option '" + arg + "'";
        } else {
            options.command.push_back(arg);
        }
        if (options.problem.empty())
            options.problem = problem;
    }
    return options;
}

}  // namespace

int RunSomctl(const std::vector<std::string>& allArgs, std::ostream& out, std::ostream& err) {
    const Options options = ParseOptions(allArgs);
    Output output(out, err, options.json, &out == &std::cout ? TerminalWidth() : 0);
    if (!options.problem.empty())
        return output.Usage(options.problem);
    const Args& args = options.command;
    if (args.empty())
        return Show(output, "usage", Help(), kUsage);
    if (args[0] == "--version")
        return Show(output, "version", std::string(kVersion) + "\n", kOk);
    if (IsHelp(args[0]))
        return Show(output, "usage", Help(), kOk);
    for (const Command& command : kCommands) {
        if (args[0] != command.name)
            continue;
        if (args.size() > 1 && IsHelp(args[1]))
            return Show(output, "usage", std::string("usage: somctl ") + command.synopsis + "\n",
                        kOk);
        CSomIf som("somctl");
        output.SetTransport(&som);
        Context context{som, output, options.appKey, options.yes};
        return command.run(context, args);
    }
    return output.Usage("unknown command '" + args[0] + "'");
}

}  // namespace somctl
