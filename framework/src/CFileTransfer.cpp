#include "CFileTransfer.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <time.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include "CFileUtility.h"
#include "CTraceUtility.h"
#include "exchange_recorder.h"
#include "text_util.h"

namespace {

const std::size_t kReadAhead = 4096;
const char kTraceSource[] = "CFileTransfer";
const int kTraceLevelError = 2;

long long NowMs() {
    struct timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return static_cast<long long>(ts.tv_sec) * 1000 + ts.tv_nsec / 1000000;
}

// A point in time after which no more waiting is allowed; none for 0 seconds.
class Deadline {
  public:
    explicit Deadline(int seconds)
        : unlimited_(seconds <= 0), end_(NowMs() + static_cast<long long>(seconds) * 1000) {}
    // Milliseconds left for poll(): -1 waits forever, 0 means expired.
    int RemainingMs() const {
        if (unlimited_)
            return -1;
        long long left = end_ - NowMs();
        if (left <= 0)
            return 0;
        return left > INT_MAX ? INT_MAX : static_cast<int>(left);
    }
    bool Expired() const { return !unlimited_ && end_ - NowMs() <= 0; }

  private:
    bool unlimited_;
    long long end_;
};

// Waits until `fd` is ready for `events`; false on time-out or error.
bool WaitFor(int fd, short events, const Deadline& deadline) {
    for (;;) {
        if (deadline.Expired()) {
            errno = ETIMEDOUT;
            return false;
        }
        struct pollfd p = {fd, events, 0};
        int n = poll(&p, 1, deadline.RemainingMs());
        if (n > 0)
            return true;  // readiness, hang-up or error: the next call tells
        if (n == 0) {
            errno = ETIMEDOUT;
            return false;
        }
        if (errno != EINTR)
            return false;
    }
}

int Connect(const std::string& path, const Deadline& deadline) {
    struct sockaddr_un addr;
    std::memset(&addr, 0, sizeof addr);
    addr.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof addr.sun_path) {
        errno = ENAMETOOLONG;
        return -1;
    }
    std::memcpy(addr.sun_path, path.data(), path.size());

    int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (fd < 0)
        return -1;
    for (;;) {
        if (connect(fd, reinterpret_cast<struct sockaddr*>(&addr), sizeof addr) == 0)
            return fd;
        if (errno == EINTR)
            continue;
        if (errno == EAGAIN) {
            // The listener's backlog is full: try again until the deadline.
            if (deadline.Expired()) {
                errno = ETIMEDOUT;
                break;
            }
            struct timespec pause = {0, 2 * 1000 * 1000};
            nanosleep(&pause, nullptr);
            continue;
        }
        if (errno == EINPROGRESS && WaitFor(fd, POLLOUT, deadline)) {
            int error = 0;
            socklen_t size = sizeof error;
            if (getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &size) == 0 && error == 0)
                return fd;
            errno = error;
        }
        break;
    }
    const int why = errno;
    close(fd);
    errno = why;
    return -1;
}

bool SendAll(int fd, const char* data, std::size_t size, const Deadline& deadline) {
    while (size > 0) {
        ssize_t n = send(fd, data, size, MSG_NOSIGNAL);
        if (n > 0) {
            data += n;
            size -= static_cast<std::size_t>(n);
            continue;
        }
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK) && WaitFor(fd, POLLOUT, deadline)) {
            continue;
        }
        return false;
    }
    return true;
}

// Reads up to `size` bytes; 0 at orderly close, -1 on error or time-out.
ssize_t ReadSome(int fd, char* data, std::size_t size, const Deadline& deadline) {
    for (;;) {
        ssize_t n = recv(fd, data, size, 0);
        if (n >= 0)
            return n;
        if (errno == EINTR)
            continue;
        if ((errno == EAGAIN || errno == EWOULDBLOCK) && WaitFor(fd, POLLIN, deadline))
            continue;
        return -1;
    }
}

// The value without a comment: a '#' at its start or after a blank begins
// one, so a '#' inside a path ("/run/a#b.sock") stays part of it.
std::string WithoutComment(const std::string& value) {
    for (std::string::size_type at = 0; at < value.size(); ++at) {
        if (value[at] == '#' && (at == 0 || value[at - 1] == ' ' || value[at - 1] == '\t'))
            return qel::TrimBlanks(value.substr(0, at));
    }
    return value;
}

// Whole seconds from 0 up to what a millisecond int holds.
bool ParseTimeout(const std::string& value, int& seconds) {
    errno = 0;
    char* end = nullptr;
    const long parsed = std::strtol(value.c_str(), &end, 10);
    if (value.empty() || !std::isdigit(static_cast<unsigned char>(value[0])) || *end != '\0' ||
        errno != 0 || parsed > INT_MAX / 1000)
        return false;
    seconds = static_cast<int>(parsed);
    return true;
}

std::string ResolvedPath(const std::string& configFile) {
    return !configFile.empty() && configFile[0] == '/' ? CFileUtility::SystemPath(configFile)
                                                       : configFile;
}

// `path` is the resolved form of `configFile`, which the trace names.
bool ReadConfigurationFile(const std::string& configFile, const std::string& path,
                           std::string& socketPath, int& timeoutSeconds,
                           const std::string& traceSource) {
    errno = 0;
    std::ifstream in(path);
    if (!in) {
        if (errno == 0)
            errno = ENOENT;
        return false;
    }
    std::string line;
    while (std::getline(in, line)) {
        std::string trimmed = qel::TrimBlanks(line);
        if (trimmed.empty() || trimmed[0] == '#')
            continue;
        std::string::size_type eq = trimmed.find('=');
        if (eq == std::string::npos)
            continue;
        std::string key = qel::TrimBlanks(trimmed.substr(0, eq));
        std::string value = WithoutComment(qel::TrimBlanks(trimmed.substr(eq + 1)));
        if (key == "socket") {
            socketPath = value;
        } else if (key == "timeout" && !ParseTimeout(value, timeoutSeconds)) {
            CTraceUtility::WriteDebug(traceSource, kTraceLevelError,
                                      "%s: timeout \"%s\" is not whole seconds from 0 to %d; "
                                      "the time-out stays %d s",
                                      configFile.c_str(), value.c_str(), INT_MAX / 1000,
                                      timeoutSeconds);
        }
    }
    errno = 0;
    return !socketPath.empty();
}

}  // namespace

// Receives into a buffer while it has room (no copy) and into a drain area
// after that; what does not fit is dropped. Over the transport's own storage
// the buffer grows, up to the limit, to what the reply announces.
class CFileTransfer::ReplySink {
  public:
    ReplySink(char* buffer, std::size_t size)
        : buffer_(buffer), capacity_(size), limit_(size - 1) {}
    ReplySink(CFileTransfer& owner, std::size_t maxReplySize)
        : owner_(&owner), limit_(maxReplySize - 1) {
        Reserve(kInitialStorage < limit_ ? kInitialStorage : limit_);
    }
    // Makes room for `bytes` stored bytes (and the NUL) where storage can grow.
    void Reserve(std::size_t bytes) {
        if (owner_ == nullptr)
            return;
        bytes = bytes < limit_ ? bytes : limit_;
        if (owner_->replyCapacity_ < bytes + 1) {
            std::unique_ptr<char[]> grown(new char[bytes + 1]);
            if (stored_ > 0)
                std::memcpy(grown.get(), owner_->replyStorage_.get(), stored_);
            owner_->replyStorage_ = std::move(grown);
            owner_->replyCapacity_ = bytes + 1;
        }
        buffer_ = owner_->replyStorage_.get();
        capacity_ = owner_->replyCapacity_;
    }
    // Reads up to `want` bytes; the result of ReadSome. `*data` points at them.
    ssize_t Receive(int fd, std::size_t want, const Deadline& deadline, const char** data) {
        if (Room() == 0 && stored_ < limit_)
            Reserve(2 * capacity_);  // no announced length: grow as bytes come
        const std::size_t room = Room();
        char* target = room > 0 ? buffer_ + stored_ : Drain();
        const std::size_t limit = room > 0 ? room : kDrainSize;
        ssize_t n = ReadSome(fd, target, want < limit ? want : limit, deadline);
        if (n > 0 && room > 0)
            stored_ += static_cast<std::size_t>(n);
        *data = target;
        return n;
    }
    int Finish() {
        buffer_[stored_] = '\0';
        return static_cast<int>(stored_);
    }
    std::string Stored() const { return std::string(buffer_ ? buffer_ : "", stored_); }
    // Keeps at most the first `bytes` bytes: what a read ahead took past the reply's end.
    void Truncate(std::size_t bytes) { stored_ = stored_ < bytes ? stored_ : bytes; }
    // Drops what came: the reply reads as "".
    void Discard() {
        stored_ = 0;
        Finish();
    }

  private:
    static constexpr std::size_t kInitialStorage = 4096;
    static constexpr std::size_t kDrainSize = 64 * 1024;

    std::size_t Room() const {
        const std::size_t usable = capacity_ - 1 < limit_ ? capacity_ - 1 : limit_;
        return usable - stored_;
    }
    char* Drain() {
        if (!drain_)
            drain_.reset(new char[kDrainSize]);
        return drain_.get();
    }

    CFileTransfer* owner_ = nullptr;
    char* buffer_ = nullptr;
    std::size_t capacity_ = 0;
    std::size_t limit_;
    std::size_t stored_ = 0;
    std::unique_ptr<char[]> drain_;
};

bool CFileTransfer::ConfigurationStamp::operator==(const ConfigurationStamp& other) const {
    return path == other.path && device == other.device && inode == other.inode &&
           size == other.size && changed == other.changed && modified == other.modified;
}

CFileTransfer::CFileTransfer(std::string name, std::string configFile)
    : name_(std::move(name)), configFile_(std::move(configFile)) {}

CFileTransfer::~CFileTransfer() {
    CloseConnection();
}

int CFileTransfer::Fail(Stage stage) {
    lastFailedStage_ = stage;
    lastErrno_ = stage == Stage::kNone ? 0 : errno;
    return -1;
}

void CFileTransfer::CloseConnection() {
    if (fd_ >= 0)
        close(fd_);
    fd_ = -1;
}

bool CFileTransfer::ReadConfiguration(const std::string& configFile, std::string& socketPath,
                                      int& timeoutSeconds) {
    return ReadConfigurationFile(configFile, ResolvedPath(configFile), socketPath, timeoutSeconds,
                                 kTraceSource);
}

bool CFileTransfer::LoadConfiguration() {
    ConfigurationStamp stamp;
    stamp.path = ResolvedPath(configFile_);
    struct stat info;
    if (stat(stamp.path.c_str(), &info) == 0) {
        stamp.device = info.st_dev;
        stamp.inode = info.st_ino;
        stamp.size = info.st_size;
        stamp.changed = info.st_ctim.tv_sec * 1000000000LL + info.st_ctim.tv_nsec;
        stamp.modified = info.st_mtim.tv_sec * 1000000000LL + info.st_mtim.tv_nsec;
        if (stamp == configurationStamp_ && !socketPath_.empty())
            return true;
    }
    configurationStamp_ = ConfigurationStamp();
    socketPath_.clear();
    int timeoutSeconds = kDefaultTimeoutSeconds;
    if (!ReadConfigurationFile(configFile_, stamp.path, socketPath_, timeoutSeconds, name_))
        return false;
    timeoutSeconds_ = timeoutSeconds;
    if (stamp.size >= 0)
        configurationStamp_ = stamp;  // stat'ed before the read: a later change is noticed
    return true;
}

int CFileTransfer::Send(const std::string& message) {
    qel::RecordedSend recorded(this, message, lastFailedStage_, lastErrno_);
    CloseConnection();
    Fail(Stage::kNone);
    if (!LoadConfiguration() && socketOverride_.empty())
        return Fail(Stage::kConfiguration);
    if (!socketOverride_.empty())
        socketPath_ = socketOverride_;
    fd_ = Connect(socketPath_, Deadline(timeoutSeconds_));
    if (fd_ < 0)
        return Fail(Stage::kConnect);
    if (!SendAll(fd_, message.data(), message.size(), Deadline(timeoutSeconds_))) {
        Fail(Stage::kSend);
        CloseConnection();
        return -1;
    }
    return message.size() > static_cast<std::size_t>(INT_MAX) ? INT_MAX
                                                              : static_cast<int>(message.size());
}

int CFileTransfer::SendMessage(std::string message) {
    return Send(message);
}

int CFileTransfer::RecvMessage(char* buffer, int bufferSize, int headerLength) {
    if (fd_ < 0 || buffer == nullptr || bufferSize <= 0) {
        errno = fd_ < 0 ? ENOTCONN : EINVAL;
        Fail(Stage::kReceive);
        CloseConnection();
        return -1;
    }
    ReplySink sink(buffer, static_cast<std::size_t>(bufferSize));
    return Receive(sink, headerLength);
}

int CFileTransfer::ExchangeThrough(const std::string& request, int headerLength, ReplySink& sink) {
    if (Send(request) < 0) {
        sink.Finish();
        return kNotSent;
    }
    return Receive(sink, headerLength);
}

int CFileTransfer::Exchange(const std::string& request, int headerLength,
                            std::size_t maxReplySize) {
    ReplySink sink(*this, maxReplySize > 0 ? maxReplySize : 1);
    return ExchangeThrough(request, headerLength, sink);
}

int CFileTransfer::Exchange(const std::string& request, int headerLength, char* buffer,
                            int bufferSize) {
    if (buffer == nullptr || bufferSize <= 0) {
        if (Send(request) < 0)
            return kNotSent;
        return RecvMessage(buffer, bufferSize, headerLength);
    }
    ReplySink sink(buffer, static_cast<std::size_t>(bufferSize));
    return ExchangeThrough(request, headerLength, sink);
}

char* CFileTransfer::ReplyBytes() {
    if (!replyStorage_) {
        replyStorage_.reset(new char[1]);
        replyStorage_[0] = '\0';
        replyCapacity_ = 1;
    }
    return replyStorage_.get();
}

int CFileTransfer::Receive(ReplySink& sink, int headerLength) {
    qel::RecordedReceive recorded(this, lastFailedStage_, lastErrno_,
                                  [&sink] { return sink.Stored(); });
    Fail(Stage::kNone);
    const Deadline deadline(timeoutSeconds_);

    // The header, keeping its last 8 characters: the body-length field.
    const std::size_t header = headerLength > 0 ? static_cast<std::size_t>(headerLength) : 0;
    sink.Reserve(header);
    // The service is still working on the reply: wait before the first read
    // instead of a read that would find nothing.
    WaitFor(fd_, POLLIN, deadline);
    char lengthField[kLengthFieldWidth];
    std::size_t lengthFieldFill = 0;
    std::size_t got = 0;
    while (got < header) {
        // Reads ahead into the body: a small reply comes in one read.
        const char* data = nullptr;
        ssize_t n = sink.Receive(fd_, header - got + kReadAhead, deadline, &data);
        if (n <= 0) {
            if (n == 0)
                errno = ECONNRESET;  // closed before a whole header
            Fail(Stage::kReceive);
            CloseConnection();
            sink.Discard();
            return -1;
        }
        for (ssize_t i = 0; i < n; ++i) {
            std::size_t at = got + static_cast<std::size_t>(i);
            if (header >= kLengthFieldWidth && at >= header - kLengthFieldWidth && at < header) {
                lengthField[lengthFieldFill++] = data[i];
            }
        }
        got += static_cast<std::size_t>(n);
    }

    // The body: a known length, or everything until the service closes.
    bool knownLength = lengthFieldFill == kLengthFieldWidth;
    unsigned long long remaining = 0;
    for (std::size_t i = 0; knownLength && i < kLengthFieldWidth; ++i) {
        if (lengthField[i] < '0' || lengthField[i] > '9') {
            knownLength = false;
        } else {
            remaining = remaining * 10 + static_cast<unsigned>(lengthField[i] - '0');
        }
    }
    const std::size_t ahead = got - header;
    if (knownLength) {
        sink.Reserve(header + static_cast<std::size_t>(remaining));
        sink.Truncate(header + static_cast<std::size_t>(remaining));
        remaining -= ahead < remaining ? ahead : remaining;
    }
    bool failed = false;
    while (!knownLength || remaining > 0) {
        std::size_t want = 1 << 20;
        if (knownLength && remaining < want)
            want = static_cast<std::size_t>(remaining);
        const char* data = nullptr;
        ssize_t n = sink.Receive(fd_, want, deadline, &data);
        if (n == 0)
            break;  // the service closed: keep what came
        if (n < 0) {
            Fail(Stage::kReceive);
            failed = true;
            break;
        }
        if (knownLength)
            remaining -= static_cast<unsigned long long>(n);
    }
    CloseConnection();
    int stored = sink.Finish();
    return failed ? -1 : stored;
}
