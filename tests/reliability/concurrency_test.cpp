// Eight threads, each with its own CSomIf, thousands of calls against somd
// with tracing to a file: every result right, every trace line whole, no
// password in a trace line or a log, trace and state files private. The CI
// also runs this under ThreadSanitizer.
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <sstream>
#include <thread>

#include "CSomIf.h"
#include "CTraceUtility.h"
#include "support/somd_process.h"
#include "support/test_data.h"

namespace {

namespace fs = std::filesystem;

TEST(ConcurrencyTest, EightClientsWithTracingAndNoSecretShown) {
    qel_test::TempSysroot root;
    qel_test::SomdProcess somd(root);
    const std::string trace = root.Path("/trace.log");
    setenv("QEL_TRACE", trace.c_str(), 1);
    CTraceUtility::Initialize("concurrency", 0xFFFFFFFFu);
    CSomIf som("secrets");  // known passwords through the operations that carry them
    CVELMORA_DownloadSetting setting;
    setting.ProxyPassword = "pw-proxy-71e2";
    setting.CacheServerPassword = "pw-cache-93c4";
    std::vector<std::string> log;
    EXPECT_EQ(som.SetAutoDownloadSetting(setting, CVELMORA_DownloadSchedule()), 0);
    EXPECT_EQ(som.DownloadAll(setting), 0);
    ASSERT_EQ(som.CollectDownloadLog("k", log), 0);
    EXPECT_EQ(log.size(), 3u);
    for (const std::string& line : log)
        EXPECT_EQ(line.find("pw-"), std::string::npos) << line;

    const int kThreads = 8;
    const int kRounds = 30;  // 4 calls a round: 960 calls in all
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&wrong, t] {
            CSomIf som("client-" + std::to_string(t));
            for (int i = 0; i < kRounds; ++i) {
                const std::string name = "P" + std::to_string(t), value = std::to_string(i);
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

    const auto privateFile = fs::perms::owner_read | fs::perms::owner_write;
    EXPECT_EQ(fs::status(trace).permissions(), privateFile);
    EXPECT_EQ(fs::status(somd.StatePath()).permissions(), privateFile);
    EXPECT_EQ(qel_test::ReadFile(trace).find("pw-"), std::string::npos);
    std::istringstream in(qel_test::ReadFile(trace));
    int lines = 0;
    for (std::string line; std::getline(in, line);) {
        ++lines;
        // "<date> <time> [pid:tid] <source> L<level> <text>", one line each.
        ASSERT_EQ(line.find(" [", 20), 26u) << line;
        ASSERT_NE(line.find(" L"), std::string::npos) << line;
        ASSERT_EQ(line.find("[ENTER]", line.find("[ENTER]") + 1), std::string::npos) << line;
    }
    EXPECT_GT(lines, kThreads * kRounds * 8);
}

}  // namespace
