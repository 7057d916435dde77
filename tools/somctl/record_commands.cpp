#include "record_commands.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "CFileTransfer.h"
#include "CResultCode.h"
#include "commands.h"
#include "common/protocol.h"
#include "recording.h"
#include "somctl.h"

extern char** environ;

namespace somctl {
namespace {

using qel::recording::Exchange;

const char kRecordUsage[] = "usage: record FILE -- COMMAND [ARGS]";
const char kCheckUsage[] = "usage: replay-check FILE";

// Runs argv[0] with `argv` and waits; the exit code, 128 + signal when killed.
int RunAndWait(std::vector<std::string> argv, std::string& problem) {
    std::vector<char*> pointers;
    for (std::string& arg : argv)
        pointers.push_back(&arg[0]);
    pointers.push_back(nullptr);
    pid_t pid = -1;
    const int error =
        posix_spawn(&pid, "/proc/self/exe", nullptr, nullptr, pointers.data(), environ);
    if (error != 0) {
        problem = std::strerror(error);
        return -1;
    }
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

// The differing reply of one record, or "" when it is equal.
std::string Difference(const Exchange& recorded, const std::string& live) {
    const std::string masked = qel::recording::MaskMessage(live);
    if (masked == recorded.reply)
        return "";
    std::size_t at = 0;
    while (at < masked.size() && at < recorded.reply.size() && masked[at] == recorded.reply[at])
        ++at;
    return "the reply differs from byte " + std::to_string(at) + ": recorded \"" +
           qel::recording::Escape(recorded.reply.substr(at, 40)) + "\", live \"" +
           qel::recording::Escape(masked.substr(at, 40)) + "\"";
}

std::string RequestName(const Exchange& exchange) {
    qel::recording::MessageParts parts;
    qel::recording::SplitMessage(exchange.request, parts);
    return qel::recording::Escape(parts.className + "/" + parts.method);
}

// Why a recorded request is not sent again, or "".
std::string SkipReason(const Exchange& exchange) {
    qel::recording::MessageParts parts;
    qel::recording::SplitMessage(exchange.request, parts);
    if (exchange.outcome != qel::recording::Outcome::kReplied)
        return "recorded without a reply";
    if (qel::recording::HoldsSecret(parts.body))
        return "carries a masked password";
    return "";
}

}  // namespace

int RecordCommand(Output& output, const std::vector<std::string>& args, const std::string& appKey,
                  bool yes) {
    if (args.size() < 4 || args[1].empty() || args[2] != "--")
        return output.Usage(kRecordUsage);
    const int fd = open(args[1].c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (fd < 0)
        return output.Usage(args[1] + ": " + std::strerror(errno));
    close(fd);
    // This run's options go first unless the command gives them itself: an
    // option given twice is refused.
    const std::vector<std::string> command(args.begin() + 3, args.end());
    const auto gives = [&command](const char* option) {
        return std::find(command.begin(), command.end(), option) != command.end();
    };
    std::vector<std::string> argv{"somctl"};
    if (!gives("--app-key"))
        argv.insert(argv.end(), {"--app-key", appKey});
    if (output.json() && !gives("--json"))
        argv.push_back("--json");
    if (yes && !gives("--yes"))
        argv.push_back("--yes");
    if (!SocketOverride().empty() && !gives("--socket"))
        argv.insert(argv.end(), {"--socket", SocketOverride()});
    argv.insert(argv.end(), command.begin(), command.end());
    setenv("QEL_RECORD", args[1].c_str(), 1);
    std::string problem;
    const int exit = RunAndWait(argv, problem);
    unsetenv("QEL_RECORD");
    return exit >= 0 ? exit : output.Fail("record", 0, "cannot run somctl: " + problem, kUsage);
}

int ReplayCheckCommand(Output& output, const std::vector<std::string>& args) {
    if (args.size() != 2)
        return output.Usage(kCheckUsage);
    std::vector<Exchange> recording;
    try {
        recording = qel::recording::ReadRecordingFile(args[1]);
    } catch (const std::exception& e) {
        return output.Usage(e.what());
    }
    CFileTransfer transfer("somctl", qel::protocol::kSocketConfig);
    UseSocketOverride(transfer);
    std::unique_ptr<char[]> buffer(new char[qel::protocol::kReplyBufferSize]);
    nlohmann::json differ = nlohmann::json::array(), skipped = nlohmann::json::array();
    std::size_t equal = 0;
    for (const Exchange& exchange : recording) {
        nlohmann::json entry = {{"line", exchange.line}, {"request", RequestName(exchange)}};
        const std::string skip = SkipReason(exchange);
        if (!skip.empty()) {
            entry["reason"] = skip;
            skipped.push_back(entry);
            continue;
        }
        const std::string operation = "replay-check line " + std::to_string(exchange.line);
        if (transfer.SendMessage(exchange.request) < 0) {
            return output.Fail(operation, CResultCode::kNotSent,
                               CResultCode::Describe(CResultCode::kNotSent), kUnreachable);
        }
        const int headerLength =
            std::atoi(exchange.request.substr(0, qel::protocol::kFieldWidth).c_str());
        const int got = transfer.RecvMessage(
            buffer.get(), static_cast<int>(qel::protocol::kReplyBufferSize), headerLength);
        if (got < 0) {
            return output.Fail(operation, CResultCode::kNoReply,
                               CResultCode::Describe(CResultCode::kNoReply), kNoReply);
        }
        const std::string difference =
            Difference(exchange, std::string(buffer.get(), static_cast<std::size_t>(got)));
        if (difference.empty()) {
            ++equal;
        } else {
            entry["difference"] = difference;
            differ.push_back(entry);
        }
    }
    if (output.json()) {
        output.Json(
            {{"ok", differ.empty()}, {"equal", equal}, {"differ", differ}, {"skipped", skipped}});
    } else {
        for (const auto& entry : differ)
            output.out() << "line " << entry["line"] << ": " << entry["request"].get<std::string>()
                         << ": " << entry["difference"].get<std::string>() << "\n";
        for (const auto& entry : skipped)
            output.out() << "line " << entry["line"] << ": " << entry["request"].get<std::string>()
                         << ": skipped, " << entry["reason"].get<std::string>() << "\n";
        output.out() << equal << " equal, " << differ.size() << " differ, " << skipped.size()
                     << " skipped\n";
    }
    return differ.empty() ? kOk : kServiceError;
}

}  // namespace somctl
