// Eight threads, each with its own CSomIf, thousands of calls against somd
// with tracing to a file: every result right, every trace line whole, no
// password in a trace line or a log, trace and state files private. The CI
// also runs this under ThreadSanitizer.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <atomic>
#include <fstream>
#include <thread>

#include "CSomIf.h"
#include "CTraceUtility.h"
#include "support/somd_process.h"
#include "support/test_data.h"

namespace {

unsigned Mode(const std::string& path) {
    struct stat info;
    return stat(path.c_str(), &info) == 0 ? (info.st_mode & 0777) : 0;
}

// Sets known passwords and runs the operations that carry them.
void UsePasswords() {
    CSomIf som("secrets");
    CVELMORA_DownloadSetting setting, read;
    setting.ProxyPassword = "pw-proxy-71e2";
    setting.CacheServerPassword = "pw-cache-93c4";
    CVELMORA_DownloadSchedule schedule;
    std::vector<std::string> lines;
    EXPECT_EQ(som.SetAutoDownloadSetting(setting, schedule), 0);
    EXPECT_EQ(som.GetAutoDownloadSetting(read, schedule), 0);
    EXPECT_EQ(read.ProxyPassword, setting.ProxyPassword);
    EXPECT_EQ(som.DownloadAll(setting), 0);
    ASSERT_EQ(som.CollectDownloadLog("k", lines), 0);
    ASSERT_FALSE(lines.empty());
    for (const std::string& line : lines)
        EXPECT_EQ(line.find("pw-"), std::string::npos) << line;
}

TEST(ConcurrencyTest, EightClientsWithTracingAndNoSecretShown) {
    qel_test::TempSysroot root;
    qel_test::SomdProcess somd(root);
    const std::string trace = root.Path("/trace.log");
    setenv("QEL_TRACE", trace.c_str(), 1);
    CTraceUtility::Initialize("concurrency", 0xFFFFFFFFu);
    UsePasswords();

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

    EXPECT_EQ(Mode(trace), 0600u);
    EXPECT_EQ(Mode(somd.StatePath()), 0600u);
    EXPECT_EQ(qel_test::ReadFile(trace).find("pw-"), std::string::npos);
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
