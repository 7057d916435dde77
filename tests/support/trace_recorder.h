// Records every trace line while it lives (through CTraceUtility's sink).
#ifndef QEL_TESTS_SUPPORT_TRACE_RECORDER_H
#define QEL_TESTS_SUPPORT_TRACE_RECORDER_H

#include <map>
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
    // The steps whose "[ENTER] " and "[LEAVE] " lines do not pair up, by
    // signature (what follows the tag, up to its last ")").
    std::vector<std::string> UnpairedSteps() const {
        std::map<std::string, int> open;
        for (const std::string& t : Texts()) {
            if (t.compare(0, 8, "[ENTER] ") == 0 || t.compare(0, 8, "[LEAVE] ") == 0)
                open[t.substr(8, t.rfind(')') - 7)] += t[1] == 'E' ? 1 : -1;
        }
        std::vector<std::string> unpaired;
        for (const auto& o : open)
            unpaired.insert(unpaired.end(), o.second != 0 ? 1 : 0, o.first);
        return unpaired;
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
