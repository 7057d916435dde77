// Records every trace line while it lives (through CTraceUtility's sink).
#ifndef QEL_TESTS_SUPPORT_TRACE_RECORDER_H
#define QEL_TESTS_SUPPORT_TRACE_RECORDER_H

#include <mutex>
#include <string>
#include <vector>

#include "CTraceUtility.h"

namespace qel_test {

struct TraceLine {
    std::string source;
    int level;
    std::string text;
};

class TraceRecorder {
  public:
    TraceRecorder() {
        CTraceUtility::SetSink(
            [this](const std::string& source, int level, const std::string& text) {
                std::lock_guard<std::mutex> lock(mutex_);
                lines_.push_back(TraceLine{source, level, text});
            });
    }
    ~TraceRecorder() { CTraceUtility::SetSink(nullptr); }

    std::vector<TraceLine> Lines() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return lines_;
    }
    std::vector<std::string> Texts() const {
        std::vector<std::string> texts;
        for (const TraceLine& line : Lines())
            texts.push_back(line.text);
        return texts;
    }
    bool Contains(const std::string& text) const { return Find(text); }
    // Is there a line with exactly this text? The first one in `found`.
    bool Find(const std::string& text, TraceLine* found = nullptr) const {
        for (const TraceLine& line : Lines()) {
            if (line.text != text)
                continue;
            if (found != nullptr)
                *found = line;
            return true;
        }
        return false;
    }
    void Clear() {
        std::lock_guard<std::mutex> lock(mutex_);
        lines_.clear();
    }

  private:
    mutable std::mutex mutex_;
    std::vector<TraceLine> lines_;
};

}  // namespace qel_test

#endif  // QEL_TESTS_SUPPORT_TRACE_RECORDER_H
