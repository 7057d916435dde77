// Eight threads, each with its own CSomIf, thousands of calls against somd
// with tracing to a file: every result right, every trace line whole. The CI
// also runs this under ThreadSanitizer.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <atomic>
#include <fstream>
#include <thread>

#include "CSomIf.h"
#include "CTraceUtility.h"
#include "support/somd_process.h"

namespace {

TEST(ConcurrencyTest, EightClientsWithTracing) {
    qel_test::TempSysroot root;
    qel_test::SomdProcess somd(root);
    const std::string trace = root.Path("/trace.log");
    setenv("QEL_TRACE", trace.c_str(), 1);
    CTraceUtility::Initialize("concurrency", 0xFFFFFFFFu);

    const int kThreads = 8;
    const int kRounds = 60;  // 4 calls a round: 1,920 calls in all
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&wrong, t] {
            CSomIf som("client-" + std::to_string(t));
            for (int i = 0; i < kRounds; ++i) {
                const std::string name = "P" + std::to_string(t);
                const std::string value = std::to_string(i);
                std::string read;
                unsigned type = 0;
                std::vector<CVELMORA_QelVersionInfo> versions;
                CVELMORA_UpdateSchedule schedule;
                if (som.AliveMonitorSetParameter(name, value) != 0 ||
                    som.AliveMonitorGetParameter(name, read, type) != 0 || read != value ||
                    som.CollectQelVersion(versions) != 0 || versions.size() != 5 ||
                    som.GetAutoUpdateSetting(schedule) != 0) {
                    ++wrong;
                }
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    unsetenv("QEL_TRACE");
    CTraceUtility::Initialize("concurrency", 0xFFFFFFFFu);
    EXPECT_EQ(wrong.load(), 0);

    struct stat info;
    ASSERT_EQ(stat(trace.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);
    std::ifstream in(trace);
    std::string line;
    int lines = 0;
    while (std::getline(in, line)) {
        ++lines;
        // "<date> <time> [pid:tid] <source> L<level> <text>", one line each.
        ASSERT_EQ(line.find(" [", 20), 26u) << line;
        ASSERT_NE(line.find(" L"), std::string::npos) << line;
        ASSERT_EQ(line.find("[ENTER]", line.find("[ENTER]") + 1), std::string::npos) << line;
    }
    EXPECT_GT(lines, kThreads * kRounds * 8);
}

}  // namespace
