// Passwords never reach a trace line or the tool's output; trace and state
// files are private; and an acknowledged setting survives kill -9 of somd.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <atomic>
#include <fstream>
#include <sstream>
#include <thread>

#include "CSomIf.h"
#include "CTraceUtility.h"
#include "somctl/somctl.h"
#include "support/somd_process.h"

namespace {

std::string ReadAll(const std::string& path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

unsigned Mode(const std::string& path) {
    struct stat info;
    return stat(path.c_str(), &info) == 0 ? (info.st_mode & 0777) : 0;
}

TEST(SecretsTest, PasswordsNeverReachTracesOrOutput) {
    qel_test::TempSysroot root;
    qel_test::SomdProcess somd(root);
    const std::string trace = root.Path("/trace.log");
    setenv("QEL_TRACE", trace.c_str(), 1);
    CTraceUtility::Initialize("front", 0xFFFFFFFFu);
    {
        CSomIf som("front");
        CVELMORA_DownloadSetting setting;
        setting.ProxyPassword = "pw-proxy-71e2";
        setting.CacheServerPassword = "pw-cache-93c4";
        CVELMORA_DownloadSchedule schedule;
        CVELMORA_UpdateSchedule update;
        LONG reboot = 0;
        std::vector<std::string> lines;
        std::vector<CVELMORA_UpdatePlans> plans;
        EXPECT_EQ(som.SetAutoDownloadSetting(setting, schedule), 0);
        EXPECT_EQ(som.GetAutoDownloadSetting(setting, schedule), 0);
        EXPECT_EQ(setting.ProxyPassword, "pw-proxy-71e2");
        EXPECT_EQ(som.DownloadAll(setting), 0);
        EXPECT_EQ(som.UpdateAll(reboot), 0);
        EXPECT_EQ(som.RollbackAll(reboot), 0);
        EXPECT_EQ(som.CollectDownloadLog("k", lines), 0);
        EXPECT_EQ(som.CollectResultLog("k", lines), 0);
        EXPECT_EQ(som.GetAutoUpdateSetting(update), 0);
        EXPECT_EQ(som.GetUpdatePlans("VELMORA_UpdateManager", plans), 0);
        for (const auto& args : {std::vector<std::string>{"download-setting"},
                                 std::vector<std::string>{"--json", "download-setting"},
                                 std::vector<std::string>{"log", "download"}}) {
            std::ostringstream out, err;
            somctl::RunSomctl(args, out, err);
            EXPECT_EQ(out.str().find("pw-"), std::string::npos) << out.str();
            EXPECT_EQ(err.str().find("pw-"), std::string::npos);
        }
    }
    unsetenv("QEL_TRACE");
    CTraceUtility::Initialize("front", 0xFFFFFFFFu);
    const std::string lines = ReadAll(trace);
    EXPECT_GT(lines.size(), 1000u);
    EXPECT_EQ(lines.find("pw-"), std::string::npos);
    EXPECT_EQ(Mode(trace), 0600u);
    EXPECT_EQ(Mode(somd.StatePath()), 0600u);
}

TEST(DurabilityTest, AcknowledgedSettingsSurviveKill9) {
    qel_test::TempSysroot root;
    qel_test::SomdProcess somd(root);
    for (int round = 0; round < 3; ++round) {
        std::atomic<int> acknowledged{-1};
        std::atomic<bool> stop{false};
        std::thread writer([&] {
            CSomIf som("writer");
            for (int i = 0; !stop; ++i) {
                if (som.AliveMonitorSetParameter("Seq" + std::to_string(i), std::to_string(i)) !=
                    0) {
                    break;
                }
                acknowledged = i;
            }
        });
        // Kill only once something was acknowledged: a fixed sleep says nothing on a loaded
        // machine.
        for (int waited = 0; acknowledged < round * 3 && waited < 2000; ++waited)
            usleep(5000);
        somd.Kill();
        stop = true;
        writer.join();
        somd.Start();
        CSomIf reader("reader");
        ASSERT_GE(acknowledged.load(), 0);
        for (int i = 0; i <= acknowledged.load(); ++i) {
            std::string value;
            unsigned type = 0;
            ASSERT_EQ(reader.AliveMonitorGetParameter("Seq" + std::to_string(i), value, type), 0)
                << "acknowledged value " << i << " lost in round " << round;
            EXPECT_EQ(value, std::to_string(i));
        }
    }
}

}  // namespace
