#include "replay.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <stdexcept>
#include <tuple>

#include "common/service_codes.h"
#include "protocol.h"

namespace somd {
namespace {

using qel::recording::Exchange;
using qel::recording::MessageParts;

// Class, method and masked body, unambiguous whatever bytes they hold.
std::string RequestKey(const std::string& className, const std::string& method,
                       const std::string& body) {
    return std::to_string(className.size()) + ":" + className + std::to_string(method.size()) +
           ":" + method + qel::recording::MaskBody(body);
}

std::size_t CommonPrefix(const std::string& a, const std::string& b) {
    std::size_t n = 0;
    while (n < a.size() && n < b.size() && a[n] == b[n])
        ++n;
    return n;
}

long long MonotonicMs() {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<long long>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

// Waits as long as the recorded failure took, or until the client hangs up.
void WaitLikeFailure(int fd, long long milliseconds) {
    const long long end = MonotonicMs() + milliseconds;
    for (long long left = milliseconds; left > 0; left = end - MonotonicMs()) {
        struct pollfd p = {fd, POLLIN | POLLRDHUP, 0};
        const int ready = poll(&p, 1, left > INT_MAX ? INT_MAX : static_cast<int>(left));
        if (ready > 0 || (ready < 0 && errno != EINTR))
            return;
    }
}

void Log(const std::string& line) {
    (void)!write(STDERR_FILENO, line.data(), line.size());
}

}  // namespace

Replay::Replay(const std::string& path) : exchanges_(qel::recording::ReadRecordingFile(path)) {
    for (std::size_t i = 0; i < exchanges_.size(); ++i) {
        MessageParts parts;
        qel::recording::SplitMessage(exchanges_[i].request, parts);  // checked by the reader
        parts.body = qel::recording::MaskBody(parts.body);
        byRequest_[RequestKey(parts.className, parts.method, parts.body)].push_back(i);
        requests_.push_back(std::move(parts));
    }
}

const Exchange* Replay::Answer(const std::string& className, const std::string& method,
                               const std::string& body) {
    const auto found = byRequest_.find(RequestKey(className, method, body));
    if (found == byRequest_.end())
        return nullptr;
    std::lock_guard<std::mutex> hold(lock_);
    std::size_t& served = served_[found->first];
    const std::vector<std::size_t>& records = found->second;
    const std::size_t index = served < records.size() ? records[served] : records.back();
    ++served;
    return &exchanges_[index];
}

std::string Replay::Nearest(const std::string& className, const std::string& method,
                            const std::string& body) const {
    const std::string masked = qel::recording::MaskBody(body);
    std::size_t best = requests_.size();
    std::tuple<bool, bool, std::size_t> bestScore;
    for (std::size_t i = 0; i < requests_.size(); ++i) {
        const MessageParts& recorded = requests_[i];
        const bool sameClass = recorded.className == className;
        const auto score = std::make_tuple(sameClass && recorded.method == method, sameClass,
                                           CommonPrefix(recorded.body, masked));
        if (best == requests_.size() || score > bestScore) {
            best = i;
            bestScore = score;
        }
    }
    if (best == requests_.size())
        return "none (the recording holds no exchange)";
    const MessageParts& recorded = requests_[best];
    std::string text = "line " + std::to_string(exchanges_[best].line) + ": " +
                       qel::recording::Escape(recorded.className + "/" + recorded.method);
    if (std::get<0>(bestScore))
        text += ", its body differs from byte " + std::to_string(std::get<2>(bestScore));
    return text;
}

void Replay::Serve(int fd, const std::function<void()>& requestRead) {
    const int kPieceTimeoutMs = 60000;
    Request request;
    const ReadStatus status = ReadRequest(fd, kPieceTimeoutMs, request);
    requestRead();
    if (status == ReadStatus::kMalformed)
        WriteAll(fd, FormatReply(request, kBadRequest, ""));
    if (status != ReadStatus::kOk)
        return;
    const Exchange* recorded = Answer(request.className, request.method, request.body);
    if (recorded == nullptr) {
        Log("somd: replay: no recorded reply for " +
            qel::recording::Escape(request.className + "/" + request.method) +
            "; nearest recorded request: " +
            Nearest(request.className, request.method, request.body) + "\n");
        WriteAll(fd, FormatReply(request, kNotRecorded, ""));
    } else if (recorded->outcome == qel::recording::Outcome::kReplied) {
        WriteAll(fd, recorded->reply);
    } else {
        WaitLikeFailure(fd, recorded->milliseconds);
    }
}

}  // namespace somd
