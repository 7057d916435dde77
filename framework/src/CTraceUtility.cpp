#include "CTraceUtility.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <mutex>
#include <vector>

namespace {

struct TraceState {
    std::mutex mutex;
    CTraceUtility::Sink sink;
    std::string path;  // the QEL_TRACE value the file was opened for
    int fd = -1;
    bool ownsFd = false;
};

TraceState& State() {
    static TraceState* state = new TraceState;  // never destroyed: usable from static destructors
    return *state;
}

// The levels that reach the file (0: file output off), and whether a sink is
// installed. Read without the lock on every call so that "off" costs nothing.
std::atomic<unsigned int> g_fileMask{0};
std::atomic<bool> g_hasSink{false};
std::atomic<bool> g_envRead{false};
std::atomic<unsigned int> g_mode{0xFFFFFFFFu};

const char* Env(const char* name) {
    const char* value = secure_getenv(name);
    return (value != nullptr && *value != '\0') ? value : nullptr;
}

void CloseFileLocked(TraceState& state) {
    if (state.ownsFd && state.fd >= 0)
        close(state.fd);
    state.fd = -1;
    state.ownsFd = false;
    state.path.clear();
}

// Reads the environment and opens (or switches) the trace file.
void ConfigureLocked(TraceState& state) {
    const char* target = Env("QEL_TRACE");
    unsigned int mask = 0;
    if (target != nullptr) {
        mask = 0xFFFFFFFFu;
        if (const char* levels = Env("QEL_TRACE_LEVEL")) {
            mask = static_cast<unsigned int>(std::strtoul(levels, nullptr, 0));
        }
        if (state.path != target) {
            CloseFileLocked(state);
            if (std::string(target) == "-") {
                state.fd = STDERR_FILENO;
            } else {
                state.fd = open(target, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
                state.ownsFd = state.fd >= 0;
            }
            state.path = target;
        }
        if (state.fd < 0)
            mask = 0;
    } else {
        CloseFileLocked(state);
    }
    g_fileMask.store(mask & g_mode.load(std::memory_order_relaxed), std::memory_order_relaxed);
    g_envRead.store(true, std::memory_order_release);
}

void EnsureConfigured() {
    if (g_envRead.load(std::memory_order_acquire))
        return;
    TraceState& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    if (!g_envRead.load(std::memory_order_relaxed))
        ConfigureLocked(state);
}

std::string FormatV(const char* format, va_list args) {
    if (format == nullptr)
        return std::string();
    char small[512];
    va_list copy;
    va_copy(copy, args);
    int needed = std::vsnprintf(small, sizeof small, format, copy);
    va_end(copy);
    if (needed < 0)
        return std::string();
    if (static_cast<size_t>(needed) < sizeof small)
        return std::string(small, needed);
    std::string text(static_cast<size_t>(needed) + 1, '\0');
    std::vsnprintf(&text[0], text.size(), format, args);
    text.resize(static_cast<size_t>(needed));
    return text;
}

std::string FileLine(const std::string& source, int level, const std::string& text) {
    struct timeval now;
    gettimeofday(&now, nullptr);
    struct tm parts;
    localtime_r(&now.tv_sec, &parts);
    char stamp[64];
    std::snprintf(stamp, sizeof stamp, "%04d-%02d-%02d %02d:%02d:%02d.%06ld", parts.tm_year + 1900,
                  parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec,
                  static_cast<long>(now.tv_usec));
    char ids[96];
    std::snprintf(ids, sizeof ids, " [%d:%ld] ", static_cast<int>(getpid()),
                  static_cast<long>(syscall(SYS_gettid)));
    std::string line;
    line.reserve(text.size() + source.size() + 64);
    line.append(stamp).append(ids).append(source).append(" L").append(std::to_string(level));
    line.append(" ").append(text).push_back('\n');
    return line;
}

void WriteAll(int fd, const std::string& line) {
    const char* data = line.data();
    size_t left = line.size();
    while (left > 0) {
        ssize_t n = write(fd, data, left);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return;
        data += n;
        left -= static_cast<size_t>(n);
    }
}

}  // namespace

void CTraceUtility::Initialize(const std::string&, unsigned int mode) {
    TraceState& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    g_mode.store(mode, std::memory_order_relaxed);
    ConfigureLocked(state);
}

void CTraceUtility::SetSink(Sink sink) {
    TraceState& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    state.sink = std::move(sink);
    g_hasSink.store(static_cast<bool>(state.sink), std::memory_order_release);
}

bool CTraceUtility::IsEnabled(int level) {
    if (g_hasSink.load(std::memory_order_acquire))
        return true;
    EnsureConfigured();
    return (g_fileMask.load(std::memory_order_relaxed) & static_cast<unsigned int>(level)) != 0;
}

void CTraceUtility::WriteDebug(const std::string& source, int level, const char* format, ...) {
    if (!IsEnabled(level))
        return;
    va_list args;
    va_start(args, format);
    std::string text = FormatV(format, args);
    va_end(args);

    TraceState& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    if (state.sink) {
        state.sink(source, level, text);
        return;
    }
    if (state.fd >= 0 &&
        (g_fileMask.load(std::memory_order_relaxed) & static_cast<unsigned int>(level)) != 0) {
        WriteAll(state.fd, FileLine(source, level, text));
    }
}
