// The library against a real somd process, grouped by what breaks: bytes,
// state across restarts, request checking, the authority, bulk runs and
// ProcessStatus.ini.
#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <fstream>
#include <memory>
#include <sstream>
#include <thread>

#include "CSomIf.h"
#include "support/somd_process.h"

namespace {

using qel_test::SomdProcess;
using qel_test::TempSysroot;

const char kUpdateManager[] = "VELMORA_UpdateManager";
const HRESULT kAuthorityHeld = 0x8000A001L;
const HRESULT kUnknownMethod = 0x8000A003L;

class SomdTest : public ::testing::Test {
  protected:
    TempSysroot root;
    SomdProcess somd{root};
    CSomIf som{"it"};

    // Sends raw bytes and returns whatever comes back until the close.
    std::string RawExchange(const std::string& bytes) {
        int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        struct sockaddr_un addr = {};
        addr.sun_family = AF_UNIX;
        const std::string path = root.Path("/run/som.sock");
        path.copy(addr.sun_path, sizeof addr.sun_path - 1);
        std::string reply;
        if (connect(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) == 0) {
            send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
            shutdown(fd, SHUT_WR);
            char chunk[4096];
            ssize_t n;
            while ((n = read(fd, chunk, sizeof chunk)) > 0)
                reply.append(chunk, n);
        }
        close(fd);
        return reply;
    }
};

TEST_F(SomdTest, SettingsRoundTripAndSurviveARestart) {
    CVELMORA_DownloadSetting setting;
    setting.WebSiteUrl = "https://updates.example/qel";
    setting.ProxyPassword = "p;q";
    setting.DownloadType = 2;
    CVELMORA_DownloadSchedule schedule;
    schedule.IsAutoSetting = true;
    schedule.Time = "03:00";
    ASSERT_EQ(som.SetAutoDownloadSetting(setting, schedule), 0);
    CVELMORA_UpdateSchedule update;
    update.RepeatType = 2;
    update.DayOfWeek = "Sunday";
    ASSERT_EQ(som.SetAutoUpdateSetting(update), 0);
    CVelmora_PriorityUpdateParam priority;
    priority.AppKey = "k";
    priority.UpdatePriority = 7;
    priority.DeviceID = "PCIROOT-8086-10FB-0000";
    EXPECT_EQ(som.SetUpdatePriority("VELMORA_NicProvider", priority), 0);

    ASSERT_EQ(somd.Stop(), 0);
    somd.Start();

    CVELMORA_DownloadSetting readSetting;
    CVELMORA_DownloadSchedule readSchedule;
    ASSERT_EQ(som.GetAutoDownloadSetting(readSetting, readSchedule), 0);
    EXPECT_EQ(readSetting.WebSiteUrl, setting.WebSiteUrl);
    EXPECT_EQ(readSetting.ProxyPassword, "p;q");
    EXPECT_EQ(readSetting.DownloadType, 2);
    EXPECT_TRUE(readSchedule.IsAutoSetting);
    EXPECT_EQ(readSchedule.Time, "03:00");
    CVELMORA_UpdateSchedule readUpdate;
    ASSERT_EQ(som.GetAutoUpdateSetting(readUpdate), 0);
    EXPECT_EQ(readUpdate.DayOfWeek, "Sunday");
}

TEST_F(SomdTest, AuthorityIsHeldByOneKeyAtATime) {
    EXPECT_EQ(som.GetOperatingAuthority(kUpdateManager, "first"), 0);
    EXPECT_EQ(som.GetOperatingAuthority(kUpdateManager, "first"), 0);
    EXPECT_EQ(som.GetOperatingAuthority(kUpdateManager, "second"), kAuthorityHeld);
    EXPECT_NE(som.ReleaseOperatingAuthority(kUpdateManager, std::string("second")), 0);
    // The WBEM relay sees the same authority and reports the code as ReturnValue.
    IWbemClassObject in;
    in.push("AppKey", std::string("second"));
    IWbemClassObject* out = nullptr;
    EXPECT_EQ(som.GetOperationAuthority(kUpdateManager, &in, &out), kAuthorityHeld);
    std::unique_ptr<IWbemClassObject> owned(out);
    EXPECT_EQ(*out->GetAs<long>("ReturnValue"), static_cast<int>(kAuthorityHeld));
    EXPECT_EQ(som.ReleaseOperatingAuthority(kUpdateManager, std::string("first")), 0);
    EXPECT_EQ(som.GetOperatingAuthority(kUpdateManager, "second"), 0);
}

TEST_F(SomdTest, BulkUpdateMovesTheProcessStatusAndThePlans) {
    std::vector<CVELMORA_UpdatePlans> plans;
    ASSERT_EQ(som.GetUpdatePlans(kUpdateManager, plans), 0);
    ASSERT_EQ(plans.size(), 3u);

    std::atomic<bool> done{false};
    std::atomic<bool> sawUpdating{false};
    std::thread watcher([&] {
        CSomIf observer("observer");
        while (!done) {
            LONG status = 0;
            observer.GetQELStatus(status);
            if (status == 0x8001)
                sawUpdating = true;
            usleep(10000);
        }
    });
    LONG reboot = -1;
    EXPECT_EQ(som.UpdateAll(reboot), 0);
    done = true;
    watcher.join();
    EXPECT_TRUE(sawUpdating);
    EXPECT_EQ(reboot, 1);
    LONG status = -1;
    som.GetQELStatus(status);
    EXPECT_EQ(status, 0);

    std::vector<CVELMORA_VersionUpdateLog> logs;
    ASSERT_EQ(som.CollectVersionUpLog(logs), 0);
    EXPECT_EQ(logs.size(), 3u);
    std::vector<CVELMORA_UpdatePlans> rollback;
    ASSERT_EQ(som.GetUpdatePlans(kUpdateManager, true, rollback), 0);
    ASSERT_EQ(rollback.size(), 3u);
    EXPECT_EQ(rollback[0].NextVendorVersion, plans[0].CurrentVendorVersion);
    std::vector<std::string> lines;
    ASSERT_EQ(som.CollectResultLog("k", lines), 0);
    EXPECT_EQ(lines.size(), 3u);
    // Nothing left to update is not a failure.
    EXPECT_EQ(som.UpdateAll(reboot), 0);
    EXPECT_EQ(reboot, 0);
    EXPECT_EQ(som.RollbackAll(reboot), 0);
    ASSERT_EQ(som.GetUpdatePlans(kUpdateManager, plans), 0);
    EXPECT_EQ(plans.size(), 6u);  // appended to the three read before
}

TEST_F(SomdTest, ScenarioDataAndTheAliveMonitorLifecycle) {
    CVelmora_DevProviderManageInfo devices;
    ASSERT_EQ(som.GetProviderManageInfo("VELMORA_NicProvider", devices), 0);
    ASSERT_EQ(devices.DeviceInfo.size(), 2u);
    EXPECT_EQ(devices.DeviceInfo[0].DeviceName, "82599ES 10-Gigabit SFI/SFP+ Network Connection");
    CVelmora_ToolProviderManageInfo tools;
    ASSERT_EQ(som.GetProviderManageInfo("VELMORA_FirmwareTool", tools), 0);
    EXPECT_EQ(tools.ToolInfo.size(), 1u);
    EXPECT_EQ(som.GetProviderManageInfo("VELMORA_Unknown", devices), 0x80081101L);
    std::vector<CVELMORA_QelVersionInfo> versions;
    ASSERT_EQ(som.CollectQelVersion(versions), 0);
    EXPECT_EQ(versions.size(), 5u);
    EXPECT_EQ(som.DownloadAll(CVELMORA_DownloadSetting()), 0);
    std::vector<std::string> lines;
    ASSERT_EQ(som.CollectDownloadLog("k", lines), 0);
    EXPECT_EQ(lines.size(), 3u);
    EXPECT_EQ(som.ExecuteReboot(), 0);

    std::string value;
    unsigned type = 0;
    auto alive = [&](const char* name) {
        value = "?";
        return som.AliveMonitorGetParameter(name, value, type) == 0 ? value : "error";
    };
    EXPECT_EQ(alive("Interval"), "30");
    EXPECT_EQ(type, 1u);
    EXPECT_EQ(som.AliveMonitorSetParameter("Interval", "45"), 0);
    EXPECT_EQ(alive("Interval"), "45");
    EXPECT_EQ(som.AliveMonitorClearParameters(), 0);
    EXPECT_EQ(alive("Interval"), "error");
    EXPECT_EQ(som.AliveMonitorUpdateParameters(), 0);
    EXPECT_EQ(alive("Interval"), "30");

    // An unserved method comes back through the WBEM relay as ReturnValue.
    std::unique_ptr<IWbemClassObject> exec;
    IWbemClassObject* out = nullptr;
    char cls[] = "VELMORA_Nothing";
    char method[] = "NoSuchMethod";
    EXPECT_EQ(som.ExecMethod(cls, method, 0, nullptr, nullptr, &out, nullptr), 0);
    exec.reset(out);
    EXPECT_EQ(*out->GetAs<long>("ReturnValue"), static_cast<int>(kUnknownMethod));
}

TEST_F(SomdTest, BadRequestsNeverStopTheService) {
    const std::string requests[] = {
        "",
        "garbage that is not a request",
        "00000099cafefeedC/M0000000000000000",     // header cut short
        "00000035deadbeefC/M0000000000000000",     // wrong magic
        "00000035cafefeedC/M00000000xxxxxxxx",     // bad body length
        "00000035cafefeedC/M0000000099999999",     // body beyond the limit
        "00000035cafefeedC/M0000000000000010abc",  // body cut short
        "00000036cafefeedCX/M0000000000000000",    // unknown class and method
    };
    for (const std::string& request : requests)
        RawExchange(request);
    EXPECT_NE(RawExchange("00000035cafefeedC/M0000000000000000").find("8000a003"),
              std::string::npos);
    std::vector<CVELMORA_QelVersionInfo> versions;
    EXPECT_EQ(som.CollectQelVersion(versions), 0);
}

// --- Bytes: any byte sequence is stored and served back as it was sent.
TEST_F(SomdTest, AnyBytesSurviveAStoreAndARestart) {
    const std::string bytes[] = {"\xff", "caf\xe9", "\x01hex:4z", "\xc3\xa9"};
    for (const std::string& value : bytes) {
        CVELMORA_DownloadSetting setting;
        setting.ProxyUser = value;
        ASSERT_EQ(som.SetAutoDownloadSetting(setting, CVELMORA_DownloadSchedule()), 0);
        ASSERT_EQ(som.AliveMonitorSetParameter("N" + value, value), 0);
        ASSERT_EQ(som.GetOperatingAuthority(kUpdateManager, value), 0);
        ASSERT_EQ(somd.Stop(), 0);
        somd.Start();
        CVELMORA_DownloadSetting read;
        CVELMORA_DownloadSchedule schedule;
        ASSERT_EQ(som.GetAutoDownloadSetting(read, schedule), 0);
        EXPECT_EQ(read.ProxyUser, value);
        std::string got;
        unsigned type = 0;
        EXPECT_EQ(som.AliveMonitorGetParameter("N" + value, got, type), 0);
        EXPECT_EQ(got, value);
        EXPECT_EQ(som.ReleaseOperatingAuthority(kUpdateManager, value), 0);
    }
}

// --- State: what was acknowledged comes back; a bad file stops the start.
TEST_F(SomdTest, AnEmptyMonitorListStaysEmptyAndTheFileStaysCompact) {
    ASSERT_EQ(som.AliveMonitorClearParameters(), 0);
    const auto size = [&] {
        std::ifstream in(somd.StatePath(), std::ios::ate);
        return static_cast<long>(in.tellg());
    };
    const long before = size();
    for (int i = 0; i < 20; ++i)
        ASSERT_EQ(som.AliveMonitorClearParameters(), 0);
    EXPECT_EQ(size(), before);
    ASSERT_EQ(somd.Stop(), 0);
    somd.Start();
    std::string value;
    unsigned type = 0;
    EXPECT_NE(som.AliveMonitorGetParameter("Interval", value, type), 0);
}

TEST_F(SomdTest, AStateFileThatDoesNotValidateStopsTheStartUntouched) {
    ASSERT_EQ(som.AliveMonitorClearParameters(), 0);
    ASSERT_EQ(somd.Stop(), 0);
    std::ostringstream saved;
    saved << std::ifstream(somd.StatePath()).rdbuf();
    const std::string good = saved.str();
    const std::string field = "\"DownloadType\":0";
    ASSERT_NE(good.find(field), std::string::npos) << good;
    const auto with = [&](const std::string& replacement) {
        return std::string(good).replace(good.find(field), field.size(), replacement);
    };
    const std::string files[] = {
        "{}",
        "not json",
        with("\"DownloadTyp\":0"),
        with("\"DownloadType\":1099511627776"),
        with("\"DownloadType\":1.9"),
        with("\"DownloadType\":\"2\""),
        with("\"DownloadType\":0,\"Extra\":1"),
    };
    for (const std::string& file : files) {
        std::ofstream(somd.StatePath(), std::ios::trunc) << file;
        std::string message;
        EXPECT_NE(somd.StartExpectingExit(message), 0) << file;
        EXPECT_NE(message.find(somd.StatePath()), std::string::npos) << message;
        std::ostringstream after;
        after << std::ifstream(somd.StatePath()).rdbuf();
        EXPECT_EQ(after.str(), file);
    }
    std::ofstream(somd.StatePath(), std::ios::trunc) << good;
    somd.Start();
    EXPECT_EQ(som.AliveMonitorClearParameters(), 0);
}

// --- Requests: what does not parse, or is not served there, changes nothing.
TEST_F(SomdTest, UnreadableSettersAndUnservedClassesAreRefused) {
    CVELMORA_UpdateSchedule update;
    update.DayOfWeek = "Sunday";
    ASSERT_EQ(som.SetAutoUpdateSetting(update), 0);
    const auto frame = [](const std::string& target, const std::string& body) {
        char tail[32];
        std::snprintf(tail, sizeof tail, "%08x%08zu", 0u, body.size());
        char head[16];
        std::snprintf(head, sizeof head, "%08zu", 8 + 8 + target.size() + 16);
        return head + std::string("cafefeed") + target + tail + body;
    };
    const struct {
        std::string target, body, code;
    } cases[] = {
        {"VELMORA_UpdateManager/SetAutoUpdateSetting", "", "8000a004"},
        {"VELMORA_UpdateManager/SetAutoUpdateSetting", "garbage;;;", "8000a004"},
        {"VELMORA_UpdateManager/SetAutoDownloadSetting", "", "8000a004"},
        {"VELMORA_UpdateManager/SetAutoDownloadSetting", "string;x;\xff;", "8000a004"},
        {"Bogus/GetOperatingAuthority", "string;AppKey;k;", "8000a003"},
        {"Bogus/GetUpdatePlans", "", "8000a003"},
    };
    for (const auto& c : cases)
        EXPECT_NE(RawExchange(frame(c.target, c.body)).find(c.code), std::string::npos) << c.target;
    CVELMORA_UpdateSchedule read;
    ASSERT_EQ(som.GetAutoUpdateSetting(read), 0);
    EXPECT_EQ(read.DayOfWeek, "Sunday");
    EXPECT_EQ(som.ReleaseOperatingAuthority(kUpdateManager, std::string("k")), 0);  // not held
}

// --- Authority: a request that carries a key is refused while another holds it.
TEST_F(SomdTest, APriorityFromAnotherKeyIsRefusedWhileTheAuthorityIsHeld) {
    ASSERT_EQ(som.GetOperatingAuthority(kUpdateManager, "holder"), 0);
    CVelmora_PriorityUpdateParam priority;
    priority.AppKey = "other";
    EXPECT_EQ(som.SetUpdatePriority("VELMORA_NicProvider", priority), kAuthorityHeld);
    priority.AppKey = "holder";
    EXPECT_EQ(som.SetUpdatePriority("VELMORA_NicProvider", priority), 0);
}

// --- ProcessStatus.ini: a run cut short by a kill is reset at the next start.
TEST_F(SomdTest, AnInterruptedRunIsResetAndLogged) {
    std::thread run([] {
        CSomIf client("killed");
        LONG reboot = 0;
        client.UpdateAll(reboot);
    });
    LONG status = 0;
    for (int i = 0; i < 200 && status != 0x8001; ++i, usleep(5000))
        som.GetQELStatus(status);
    ASSERT_EQ(status, 0x8001);
    somd.Kill();
    run.join();
    somd.Start();
    som.GetQELStatus(status);
    EXPECT_EQ(status, 0);
    std::vector<std::string> lines;
    ASSERT_EQ(som.CollectResultLog("k", lines), 0);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_NE(lines[0].find("interrupted"), std::string::npos);
}

TEST_F(SomdTest, CleanStopOnSigterm) {
    EXPECT_EQ(somd.Stop(), 0);
    EXPECT_NE(access(root.Path("/run/som.sock").c_str(), F_OK), 0);
    std::vector<CVELMORA_QelVersionInfo> versions;
    EXPECT_EQ(som.CollectQelVersion(versions), 0x80081001L);
}

}  // namespace
