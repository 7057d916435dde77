// What the service is doing, the installed versions and the service's logs.
#include "commands.h"
#include "common/protocol.h"
#include "common/record_json.h"

namespace somctl {
namespace {

namespace status = qel::protocol::status;

const char* UpdateProcessText(LONG code) {
    switch (code) {
        case status::kCodeDownload:
            return "downloading";
        case status::kCodeRollback:
            return "rolling back";
        case status::kCodeUpdate:
            return "updating";
        default:
            return "idle";
    }
}

}  // namespace

// Whether the service answers (any cheap call tells) and what the update
// process does (the process status that the service keeps on disk).
int Status(Context& c, const Args& args) {
    if (args.size() > 1)
        return c.output.Usage("usage: somctl status");
    LONG code = 0;
    c.som.GetQELStatus(code);
    std::vector<CVELMORA_QelVersionInfo> versions;
    const uint32_t rc = static_cast<uint32_t>(c.som.CollectQelVersion(versions));
    const bool answering = c.output.Reached();
    const std::string service =
        answering ? "answering" : "not answering: " + c.output.TransportReason(rc);
    const char* process = UpdateProcessText(code);
    if (c.output.json()) {
        c.output.Json(
            {{"ok", answering}, {"service", service}, {"status", process}, {"code", code}});
    } else {
        c.output.out() << "service: " << service << "\nupdate process: " << process << "\n";
    }
    return answering ? kOk : kUnreachable;
}

int Versions(Context& c, const Args& args) {
    if (args.size() > 1)
        return c.output.Usage("usage: somctl versions");
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

namespace {

int UpdateLog(Context& c) {
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

}  // namespace

int Log(Context& c, const Args& args) {
    const std::string which = args.size() == 2 ? args[1] : "";
    if (which == "updates")
        return UpdateLog(c);
    if (which != "download" && which != "result")
        return c.output.Usage("usage: somctl log download|result|updates");
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

}  // namespace somctl
