// The trace facility: file lines, level mask and mode, switching off, threads.
#include <gtest/gtest.h>

#include <unistd.h>

#include <regex>
#include <sstream>
#include <thread>
#include <tuple>

#include "CTraceUtility.h"
#include "support/temp_sysroot.h"
#include "support/test_data.h"

namespace {

const int kLevels[] = {1, 2, 4, 32};

// Points QEL_TRACE at a file (null: tracing off) and restores the quiet default.
struct TraceFile {
    qel_test::TempSysroot root;
    const std::string path = root.root() + "/trace.log";

    explicit TraceFile(const char* levels, unsigned mode = 0xFFFFFFFFu) {
        setenv("QEL_TRACE", path.c_str(), 1);
        if (levels != nullptr)
            setenv("QEL_TRACE_LEVEL", levels, 1);
        CTraceUtility::Initialize("test", mode);
    }
    ~TraceFile() { Off(); }
    static void Off() {
        unsetenv("QEL_TRACE");
        unsetenv("QEL_TRACE_LEVEL");
        CTraceUtility::Initialize("test", 0xFFFFFFFFu);
    }
    std::string Text() const { return qel_test::ReadFile(path); }
};

// A whole file line: "<date> <time> [pid:tid] <source> L<level> <text>".
std::string LinePattern(const std::string& source, int level, const std::string& text) {
    return R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{6} \[)" + std::to_string(getpid()) + R"(:\d+\] )" +
           source + " L" + std::to_string(level) + " " + text + "\n";
}

TEST(TraceUtilityTest, FileGetsWholeUninterleavedLinesOfTheLevelsThatMaskAndModeLetThrough) {
    const int before = qel_test::OpenDescriptorCount();
    // QEL_TRACE_LEVEL (null: unset), the mode, and the levels that come through.
    const unsigned all = 0xFFFFFFFFu;
    // clang-format off
    const std::tuple<const char*, unsigned, int> cases[] = {{nullptr, all, 0x27}, {"0x6", all, 0x6},
        {"0x21", all, 0x21}, {"0x6", 0x24u, 0x4}, {"0", all, 0}};
    // clang-format on
    for (const auto& c : cases) {
        TraceFile file(std::get<0>(c), std::get<1>(c));
        std::string expected;
        for (int level : kLevels) {
            const bool through = (std::get<2>(c) & level) != 0;
            EXPECT_EQ(CTraceUtility::IsEnabled(level), through) << level;
            CTraceUtility::WriteDebug("alpha", level, "entry %d", level);
            if (through)
                expected += LinePattern("alpha", level, "entry " + std::to_string(level));
        }
        EXPECT_TRUE(std::regex_match(file.Text(), std::regex(expected))) << file.Text();
    }
    // Lines from many threads, longer than the first format buffer, never interleave.
    TraceFile file(nullptr);
    const std::string payload(600, 'p');
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; i < 200; ++i)
                CTraceUtility::WriteDebug("thread", 4, "%d:%s:end", t, payload.c_str());
        });
    for (auto& thread : threads)
        thread.join();
    const std::regex line(LinePattern("thread", 4, "[0-7]:" + payload + ":end"));
    const std::string written = file.Text();
    std::istringstream lines(written);
    std::string text;
    int count = 0;
    for (; std::getline(lines, text); ++count)
        ASSERT_TRUE(std::regex_match(text + "\n", line)) << text;
    EXPECT_EQ(count, 8 * 200);
    // Switched off: the file is closed, nothing is enabled and nothing written.
    TraceFile::Off();
    EXPECT_EQ(qel_test::OpenDescriptorCount(), before);
    for (int level : kLevels)
        EXPECT_FALSE(CTraceUtility::IsEnabled(level));
    CTraceUtility::WriteDebug("src", 4, "%s", "dropped");
    EXPECT_EQ(file.Text(), written);
}

}  // namespace
