// somctl's front: the global options (CLI11), the command table and the
// dispatch.
// Each family of commands lives in a file of its own (commands.h).
#include "somctl.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <map>

#include "CSomIf.h"
#include "commands.h"
#include "record_commands.h"
#include "values.h"

namespace somctl {
namespace {

const char kDefaultAppKey[] = "somctl";
const char kVersion[] = "somctl 1.0.0";

struct Command {
    const char* name;
    const char* arguments;
    const char* summary;
    int (*run)(Context&, const Args&);
};

const Command kCommands[] = {
    {"status", "", "whether the service answers, what it is doing", Status},
    {"versions", "", "installed versions", Versions},
    {"log", "download|result|updates", "the service's logs", Log},
    {"plans", "[--rollback] [CLASS]", "pending updates (or rollbacks)", Plans},
    {"download-setting", "[set NAME=VALUE...]", "automatic download", DownloadSetting},
    {"update-setting", "[set NAME=VALUE...]", "automatic update", UpdateSetting},
    {"priority", "set CLASS NAME=VALUE...", "update priority of a module", Priority},
    {"authority", "take|release [CLASS]", "operating authority", Authority},
    {"download", "", "download all pending updates", Bulk},
    {"update", "", "apply all pending updates", Bulk},
    {"rollback", "", "roll back the applied updates", Bulk},
    {"reboot", "", "reboot after an update", Bulk},
    {"providers", "device|tool CLASS", "what a provider manages", Providers},
    {"services", "device|tool|alive", "registered services", Services},
    {"monitor", "get NAME|set NAME VALUE|clear|reload", "alive monitor", Monitor},
    {"name", "DEVICE-ID", "name a device from the PCI ID database", Name},
    {"exec", "CLASS METHOD [NAME=VALUE...]", "call any method", Exec},
    // Recording and replay (record_commands.cpp).
    {"record", "FILE -- COMMAND [ARGS]", "run a command with its exchanges recorded",
     [](Context& c, const Args& a) { return RecordCommand(c.output, a, c.appKey, c.yes); }},
    {"replay-check", "FILE", "send a recording's requests, compare replies",
     [](Context& c, const Args& a) { return ReplayCheckCommand(c.output, a); }},
};

const char kExitCodes[] =
    "exit codes: 0 done, 2 usage or invalid value, 3 service not reachable, 4 no reply within "
    "the time-out, 5 the service answered with an error, 130 Ctrl-C during a bulk run";

std::string Synopsis(const Command& command) {
    std::string synopsis = std::string("usage: somctl ") + command.name;
    if (*command.arguments != '\0')
        synopsis += std::string(" ") + command.arguments;
    return synopsis + "\n  " + command.summary + "\n";
}

// Shows text (help, version) as is, or inside a JSON document.
int Show(Output& output, const std::string& key, const std::string& text, int code) {
    if (output.json())
        output.Json({{"ok", code == kOk}, {key, text}});
    else
        output.out() << text;
    return code;
}

struct Options {
    bool json = false;
    bool yes = false;
    std::string appKey = kDefaultAppKey;
    std::string socket;
};

// The global options come before the command; everything after the
// command's name is its own (each command checks its arguments).
class CommandLine {
  public:
    CommandLine() : app_("Operates the SOM service through libqel_SomIf.", "somctl") {
        app_.add_flag("--json", options_.json, "one JSON document on every path");
        app_.add_flag("--yes", options_.yes, "update, rollback and reboot act without asking");
        app_.add_option("--app-key", options_.appKey,
                        "application key (printable ASCII without blanks or ';')")
            ->check(CLI::Validator(
                [](std::string& key) {
                    return IsSendableKey(key) ? std::string()
                                              : "accepts printable ASCII without blanks or ';'";
                },
                ""))
            ->type_name("KEY");
        app_.add_option("--socket", options_.socket,
                        "the service's socket instead of the one socket.conf names")
            ->type_name("PATH");
        app_.set_version_flag("--version", kVersion);
        app_.allow_extras();
        app_.require_subcommand(0, 1);  // "log download" is one command
        app_.footer(kExitCodes);
        for (const Command& command : kCommands) {
            CLI::App* sub = app_.add_subcommand(
                command.name, (*command.arguments ? std::string(command.arguments) + "  " : "") +
                                  command.summary);
            sub->prefix_command();
            commands_[sub] = &command;
        }
    }

    // True when a command is to run; otherwise `exit` is the code of what
    // was shown instead (help, version, a usage error).
    bool Parse(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
               int& exit) {
        // --json counts for the errors of the options that follow it, too.
        for (const std::string& arg : args) {
            if (arg == "--json")
                options_.json = true;
            if (arg.empty() || arg[0] != '-')
                break;
        }
        std::vector<std::string> reversed(args.rbegin(), args.rend());
        Output output(out, err, options_.json);
        try {
            app_.parse(reversed);
        } catch (const CLI::CallForHelp&) {
            const Command* command = Chosen();
            exit = Show(output, "usage", command ? Synopsis(*command) : app_.help(), kOk);
            return false;
        } catch (const CLI::CallForVersion& version) {
            exit = Show(output, "version", std::string(version.what()) + "\n", kOk);
            return false;
        } catch (const CLI::ParseError& error) {
            exit = output.Usage(error.what());
            return false;
        }
        const std::vector<std::string> extras = app_.remaining();
        if (Chosen() != nullptr && extras.empty())
            return true;
        if (extras.empty())
            exit = Show(output, "usage", app_.help(), kUsage);
        else if (!extras[0].empty() && extras[0][0] == '-')
            exit = output.Usage("unknown option '" + extras[0] + "'");
        else if (extras[0] == "help" && Chosen() == nullptr)
            exit = Show(output, "usage", app_.help(), kOk);
        else
            exit = output.Usage("unknown command '" + extras[0] + "'");
        return false;
    }

    const Options& options() const { return options_; }
    const Command* Chosen() const {
        const std::vector<CLI::App*> chosen = app_.get_subcommands();
        return chosen.empty() ? nullptr : commands_.at(chosen[0]);
    }
    // The command's name and its own arguments.
    Args CommandArgs() const {
        Args args{Chosen()->name};
        const std::vector<std::string> own = app_.get_subcommands()[0]->remaining();
        args.insert(args.end(), own.begin(), own.end());
        return args;
    }

  private:
    Options options_;
    CLI::App app_;
    std::map<const CLI::App*, const Command*> commands_;
};

}  // namespace

namespace {
std::string g_socketOverride;  // one run at a time: RunSomctl sets it first
}  // namespace

void SetSocketOverride(const std::string& path) {
    g_socketOverride = path;
}

const std::string& SocketOverride() {
    return g_socketOverride;
}

void UseSocketOverride(CFileTransfer& transport) {
    transport.OverrideSocketPath(g_socketOverride);
}

int RunSomctl(const std::vector<std::string>& allArgs, std::ostream& out, std::ostream& err) {
    CommandLine line;
    int exit = kOk;
    if (!line.Parse(allArgs, out, err, exit))
        return exit;
    const Options& options = line.options();
    Output output(out, err, options.json, &out == &std::cout ? TerminalWidth() : 0);
    SetSocketOverride(options.socket);
    CSomIf som("somctl");
    UseSocketOverride(som);
    output.SetTransport(&som);
    Context context{som, output, options.appKey, options.yes};
    return line.Chosen()->run(context, line.CommandArgs());
}

}  // namespace somctl
