#include "exchange_recorder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>

#include "CTraceUtility.h"
#include "fd_io.h"
#include "recording.h"

namespace qel {
namespace {

const char kTraceSource[] = "recorder";
const int kTraceLevelError = 2;

std::string UtcNow() {
    struct timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    struct tm parts;
    gmtime_r(&now.tv_sec, &parts);
    char text[40];
    const std::size_t n = strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts);
    snprintf(text + n, sizeof text - n, ".%03ldZ", now.tv_nsec / 1000000);
    return text;
}

const char* StageName(CFileTransfer::Stage stage) {
    switch (stage) {
        case CFileTransfer::Stage::kConfiguration:
            return "configuration";
        case CFileTransfer::Stage::kConnect:
            return "connect";
        case CFileTransfer::Stage::kSend:
            return "send";
        default:
            return "receive";
    }
}

std::string Reason(CFileTransfer::Stage stage, int error) {
    return std::string(StageName(stage)) + ": " + (error == 0 ? "no socket line" : strerror(error));
}

// A request sent and waiting for its receive, per transfer object.
struct Pending {
    std::string request;
    std::string when;
    long long startMs = 0;
};

std::mutex& PendingLock() {
    static std::mutex lock;
    return lock;
}
std::map<const CFileTransfer*, Pending>& PendingSends() {
    static std::map<const CFileTransfer*, Pending> pending;
    return pending;
}

// True when the file is empty or opens with this build's version line.
bool WritableRecording(int fd, bool& empty) {
    struct stat info;
    if (fstat(fd, &info) != 0)
        return false;
    empty = info.st_size == 0;
    const std::string expected = std::string(recording::kVersionLine) + "\n";
    if (empty)
        return true;
    std::string first(expected.size(), '\0');
    return pread(fd, &first[0], first.size(), 0) == static_cast<ssize_t>(first.size()) &&
           first == expected;
}

// Appends one record under an exclusive lock, with the version line first
// in a new file: writers in other threads and processes wait, so records
// never interleave.
void Append(const recording::Exchange& exchange) {
    const std::string& path = RecordPath();
    const int fd = open(path.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (fd < 0) {
        CTraceUtility::WriteDebug(kTraceSource, kTraceLevelError, "cannot open %s: %s",
                                  path.c_str(), strerror(errno));
        return;
    }
    int locked;
    while ((locked = flock(fd, LOCK_EX)) != 0 && errno == EINTR) {
    }
    bool empty = false;
    if (locked != 0 || !WritableRecording(fd, empty)) {
        CTraceUtility::WriteDebug(kTraceSource, kTraceLevelError,
                                  "%s is not a recording of this format; nothing written",
                                  path.c_str());
    } else {
        const std::string text = (empty ? std::string(recording::kVersionLine) + "\n" : "") +
                                 recording::FormatExchange(exchange);
        if (!qel::WriteAll(fd, text)) {
            CTraceUtility::WriteDebug(kTraceSource, kTraceLevelError, "cannot write %s: %s",
                                      path.c_str(), strerror(errno));
        }
    }
    close(fd);
}

void AppendFailure(const Pending& sent, recording::Outcome outcome, const std::string& reason) {
    recording::Exchange exchange;
    exchange.when = sent.when;
    exchange.milliseconds = MonotonicMs() - sent.startMs;
    exchange.outcome = outcome;
    exchange.reason = reason;
    exchange.request = sent.request;
    Append(exchange);
}

}  // namespace

// Read once: setting QEL_RECORD later in the process changes nothing, and a
// caller that does not record pays one check of this value per call.
const std::string& RecordPath() {
    static const std::string path = [] {
        const char* value = std::getenv("QEL_RECORD");
        return std::string(value != nullptr ? value : "");
    }();
    return path;
}

long long MonotonicMs() {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<long long>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

void NoteSend(const CFileTransfer* transfer, const std::string& message,
              CFileTransfer::Stage failedStage, int failedErrno, long long startMs) {
    try {
        Pending sent{recording::MaskMessage(message), UtcNow(), startMs};
        {
            std::lock_guard<std::mutex> hold(PendingLock());
            if (failedStage == CFileTransfer::Stage::kNone) {
                PendingSends()[transfer] = std::move(sent);
                return;
            }
            PendingSends().erase(transfer);
        }
        AppendFailure(sent, recording::Outcome::kNotSent, Reason(failedStage, failedErrno));
    } catch (...) {
        // Out of memory: the exchange goes on unrecorded.
    }
}

void NoteReceive(const CFileTransfer* transfer, CFileTransfer::Stage failedStage, int failedErrno,
                 const std::string& reply) {
    Pending sent;
    {
        std::lock_guard<std::mutex> hold(PendingLock());
        auto found = PendingSends().find(transfer);
        if (found == PendingSends().end())
            return;
        sent = std::move(found->second);
        PendingSends().erase(found);
    }
    if (failedStage != CFileTransfer::Stage::kNone) {
        AppendFailure(sent, recording::Outcome::kNoReply, Reason(failedStage, failedErrno));
        return;
    }
    recording::Exchange exchange;
    exchange.when = sent.when;
    exchange.milliseconds = MonotonicMs() - sent.startMs;
    exchange.request = sent.request;
    exchange.reply = recording::MaskMessage(reply);
    Append(exchange);
}

}  // namespace qel
