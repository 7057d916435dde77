// The library against a real somd process, grouped by what breaks: bytes,
// state across restarts and kills, input checking, the authority, and the
// process status through bulk runs.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <fstream>
#include <functional>
#include <thread>

#include "CSomIf.h"
#include "common/record_json.h"
#include "support/somd_process.h"
#include "support/test_data.h"

namespace {

using qel_test::ReadFile;

const char kUpdateManager[] = "VELMORA_UpdateManager";
const HRESULT kAuthorityHeld = 0x8000A001L;
const HRESULT kNotTheHolder = 0x8000A002L;
const LONG kUpdating = 0x8001;

// Whole records compared; printed with the bytes that are not UTF-8 replaced.
template <typename T>
void ExpectSame(const T& got, const T& want) {
    const nlohmann::json a(got), b(want);
    EXPECT_TRUE(a == b) << a.dump(1, ' ', true, nlohmann::json::error_handler_t::replace);
}

// Content, inode, mode and time of change of `path` (not following a link).
std::string Fingerprint(const std::string& path) {
    struct stat info = {};
    lstat(path.c_str(), &info);
    return ReadFile(path) + "|" + std::to_string(info.st_ino) + "|" + std::to_string(info.st_mode) +
           "|" + std::to_string(info.st_mtim.tv_nsec);
}

class SomdTest : public ::testing::Test {
  protected:
    qel_test::TempSysroot root;
    qel_test::SomdProcess somd{root};
    CSomIf som{"it"};

    void Restart(const std::vector<std::string>& options = {}) {
        ASSERT_EQ(somd.Stop(), 0);
        somd.Start(options);
    }
    std::string Alive(const std::string& name) {
        std::string value;
        unsigned type = 0;
        return som.AliveMonitorGetParameter(name, value, type) == 0 ? value : "error";
    }
    // Starts UpdateAll in a thread; returns once the status says "updating".
    std::thread UpdateInBackground(HRESULT& result, LONG& reboot) {
        std::thread run([&] { result = CSomIf("runner").UpdateAll(reboot); });
        LONG status = 0;
        for (int i = 0; i < 400 && status != kUpdating; ++i, usleep(5000))
            som.GetQELStatus(status);
        EXPECT_EQ(status, kUpdating);
        return run;
    }
};

// --- Bytes: any byte sequence is stored and served back as it was sent.
TEST_F(SomdTest, AnyBytesComeBackByteForByteAfterARestart) {
    const std::string values[] = {"\xff", "caf\xe9", "\x01hex:4z", "\xc3\xa9 %3B"};
    CVELMORA_DownloadSetting setting;
    setting.ProxyUser = values[0];
    setting.WebSiteUrl = values[1];
    setting.CacheServerUser = values[2];
    setting.ProxyPassword = values[3] + "p;q";  // ";" only where it is escaped
    setting.DownloadType = 2;
    CVELMORA_DownloadSchedule schedule;
    schedule.IsAutoSetting = true;
    schedule.Time = "03:00";
    CVELMORA_UpdateSchedule update;
    update.RepeatType = 2;
    update.DayOfWeek = "Sunday";
    ASSERT_EQ(som.SetAutoDownloadSetting(setting, schedule), 0);
    ASSERT_EQ(som.SetAutoUpdateSetting(update), 0);
    for (const std::string& value : values)
        ASSERT_EQ(som.AliveMonitorSetParameter("N" + value, value), 0);
    ASSERT_EQ(som.GetOperatingAuthority(kUpdateManager, values[0]), 0);
    Restart();
    CVELMORA_DownloadSetting readSetting;
    CVELMORA_DownloadSchedule readSchedule;
    CVELMORA_UpdateSchedule readUpdate;
    ASSERT_EQ(som.GetAutoDownloadSetting(readSetting, readSchedule), 0);
    ASSERT_EQ(som.GetAutoUpdateSetting(readUpdate), 0);
    ExpectSame(readSetting, setting);
    ExpectSame(readSchedule, schedule);
    ExpectSame(readUpdate, update);
    for (const std::string& value : values)
        EXPECT_TRUE(Alive("N" + value) == value) << value.size();
    EXPECT_EQ(som.GetOperatingAuthority(kUpdateManager, "\xfe"), kAuthorityHeld);
    EXPECT_EQ(som.ReleaseOperatingAuthority(kUpdateManager, values[0]), 0);
}

// What somd serves reads back as the scenario's own records, empty lists
// included (no entry made up where the scenario has none).
TEST_F(SomdTest, ProvidersAndVersionsReadBackAsTheScenarioHasThem) {
    const std::string dir = root.Path("/opt/velmora/qel/som/scenario/");
    const nlohmann::json providers = nlohmann::json::parse(ReadFile(dir + "providers.json"));
    for (const auto& entry : providers.at("DeviceProviders").items()) {
        CVelmora_DevProviderManageInfo got;
        ASSERT_EQ(som.GetProviderManageInfo(entry.key(), got), 0) << entry.key();
        for (CVelmora_DeviceInfo& device : got.DeviceInfo)  // named from the host's pci.ids
            device.DeviceName = device.DeviceVendorName = "";
        ExpectSame(got, entry.value().get<CVelmora_DevProviderManageInfo>());
    }
    for (const auto& entry : providers.at("ToolProviders").items()) {
        CVelmora_ToolProviderManageInfo got;
        ASSERT_EQ(som.GetProviderManageInfo(entry.key(), got), 0) << entry.key();
        ExpectSame(got, entry.value().get<CVelmora_ToolProviderManageInfo>());
    }
    CVelmora_DevProviderManageInfo none;
    EXPECT_EQ(som.GetProviderManageInfo("VELMORA_Unknown", none), 0x80081101L);
    std::vector<CVELMORA_QelVersionInfo> versions;
    ASSERT_EQ(som.CollectQelVersion(versions), 0);
    ExpectSame(versions, nlohmann::json::parse(ReadFile(dir + "versions.json"))
                             .get<std::vector<CVELMORA_QelVersionInfo>>());
}

// --- State: acknowledged means on disk, whatever ends somd; an empty monitor
// list stays empty and the file does not grow with each acknowledgement.
TEST_F(SomdTest, AcknowledgedChangesSurviveKill9AndAnEmptyListStaysEmpty) {
    for (int round = 0; round < 3; ++round) {
        std::atomic<int> acknowledged{-1};
        std::thread writer([&] {
            CSomIf client("writer");
            for (int i = 0;
                 client.AliveMonitorSetParameter("Seq" + std::to_string(i), std::to_string(i)) == 0;
                 ++i)
                acknowledged = i;
        });
        while (acknowledged < 0)
            usleep(1000);
        usleep(round * 15000);
        somd.Kill();
        writer.join();
        somd.Start();
        for (int i = 0; i <= acknowledged.load(); ++i)
            ASSERT_EQ(Alive("Seq" + std::to_string(i)), std::to_string(i)) << "round " << round;
    }
    ASSERT_EQ(som.AliveMonitorClearParameters(), 0);
    const std::string cleared = ReadFile(somd.StatePath());
    for (int i = 0; i < 20; ++i)
        ASSERT_EQ(som.AliveMonitorClearParameters(), 0);
    EXPECT_EQ(ReadFile(somd.StatePath()).size(), cleared.size());
    Restart();
    EXPECT_EQ(Alive("Seq0"), "error");
    EXPECT_EQ(Alive("Interval"), "error");  // the scenario's defaults stay away
    ASSERT_EQ(som.AliveMonitorUpdateParameters(), 0);
    EXPECT_EQ(Alive("Interval"), "30");
}

// A state file that cannot be read or does not validate stops the start and
// is left untouched; --fresh-state starts from the scenario instead.
TEST_F(SomdTest, ABadStateFileStopsTheStartUntouched) {
    ASSERT_EQ(som.AliveMonitorClearParameters(), 0);
    ASSERT_EQ(somd.Stop(), 0);
    const std::string path = somd.StatePath();
    const std::string good = ReadFile(path);
    const std::string field = "\"DownloadType\":0";
    ASSERT_NE(good.find(field), std::string::npos) << good;
    const auto with = [&](const std::string& replacement) {
        return std::string(good).replace(good.find(field), field.size(), replacement);
    };
    std::vector<std::function<void()>> breakings = {
        [&] { symlink(path.c_str(), path.c_str()); },  // a loop: cannot be read
        [&] { mkdir(path.c_str(), 0700); },
    };
    for (const std::string& text :
         {std::string("{}"), std::string("not json"), with("\"DownloadTyp\":0"),
          with("\"DownloadType\":1099511627776"), with("\"DownloadType\":1.9"),
          with("\"DownloadType\":\"2\""), with("\"DownloadType\":0,\"Extra\":1")})
        breakings.push_back([&path, text] { std::ofstream(path) << text; });
    for (const auto& breakIt : breakings) {
        std::remove(path.c_str());
        breakIt();
        const std::string before = Fingerprint(path);
        std::string message;
        EXPECT_EQ(somd.StartExpectingExit(message), 1) << before;
        EXPECT_NE(message.find("state file " + path), std::string::npos) << message;
        EXPECT_EQ(Fingerprint(path), before);
    }
    somd.Start({"--fresh-state"});
    EXPECT_EQ(Alive("Interval"), "30");
    ASSERT_EQ(som.AliveMonitorSetParameter("Interval", "45"), 0);
    Restart();
    EXPECT_EQ(Alive("Interval"), "45");
}

// --- Input checking: whatever does not parse, or names a method that its
// class does not serve, is refused, changes nothing and stops nothing.
TEST_F(SomdTest, MalformedRequestsAndUnservedClassesAreRefusedAndChangeNothing) {
    CVELMORA_UpdateSchedule update;
    update.DayOfWeek = "Sunday";
    ASSERT_EQ(som.SetAutoUpdateSetting(update), 0);
    const auto frame = [](const std::string& target, const std::string& body, unsigned result = 0) {
        char head[16], tail[32];
        std::snprintf(head, sizeof head, "%08zu", 8 + 8 + target.size() + 16);
        std::snprintf(tail, sizeof tail, "%08x%08zu", result, body.size());
        return head + std::string("cafefeed") + target + tail + body;
    };
    const auto refused = [&](const std::string& target, unsigned code) {
        return frame(target, "", code);
    };
    const unsigned kUnknownMethod = 0x8000A003u, kBadRequest = 0x8000A004u;
    const std::string longName = std::string(3000, 'C') + "/M";
    const std::string setUpdate = "VELMORA_UpdateManager/SetAutoUpdateSetting";
    const std::string setDownload = "VELMORA_UpdateManager/SetAutoDownloadSetting";
    const struct {
        std::string request, reply;  // an empty reply: closed without one
    } cases[] = {
        {"", ""},
        {"garbage that is not a request", ""},
        {"00000099cafefeedC/M0000000000000000", ""},     // header cut short
        {"00000035deadbeefC/M0000000000000000", ""},     // wrong magic
        {"00000035cafefeedC/M0000000000000010abc", ""},  // body cut short
        {"00000035cafefeedC/M00000000xxxxxxxx", refused("C/M", kBadRequest)},
        {"00000035cafefeedC/M0000000099999999", refused("C/M", kBadRequest)},  // too long
        {frame("C/M", ""), refused("C/M", kUnknownMethod)},
        {frame(longName, ""), refused(longName, kUnknownMethod)},
        {frame(setUpdate, ""), refused(setUpdate, kBadRequest)},
        {frame(setUpdate, "garbage;;;"), refused(setUpdate, kBadRequest)},
        {frame(setDownload, ""), refused(setDownload, kBadRequest)},
        {frame(setDownload, "string;x;\xff;"), refused(setDownload, kBadRequest)},
        {frame("Bogus/GetOperatingAuthority", "string;AppKey;k;"),
         refused("Bogus/GetOperatingAuthority", kUnknownMethod)},
        {frame("Bogus/GetUpdatePlans", ""), refused("Bogus/GetUpdatePlans", kUnknownMethod)},
    };
    for (const auto& c : cases) {
        const std::string reply = qel_test::RawExchange(somd.SocketPath(), c.request);
        EXPECT_EQ(reply, c.reply) << c.request.substr(0, 60);
    }
    CVELMORA_UpdateSchedule read;
    ASSERT_EQ(som.GetAutoUpdateSetting(read), 0);
    ExpectSame(read, update);
    EXPECT_EQ(som.GetOperatingAuthority(kUpdateManager, "other"), 0);  // "k" took nothing
}

// --- Authority: one key holds it; somd refuses other keys where a request
// carries one.
TEST_F(SomdTest, TheAuthorityIsOneKeysAndOtherKeysAreRefused) {
    EXPECT_EQ(som.GetOperatingAuthority(kUpdateManager, "first"), 0);
    EXPECT_EQ(som.GetOperatingAuthority(kUpdateManager, "first"), 0);
    EXPECT_EQ(som.GetOperatingAuthority(kUpdateManager, "second"), kAuthorityHeld);
    EXPECT_EQ(som.ReleaseOperatingAuthority(kUpdateManager, std::string("second")), kNotTheHolder);
    CVelmora_PriorityUpdateParam priority;
    priority.AppKey = "second";
    priority.UpdatePriority = 7;
    priority.DeviceID = "PCIROOT-8086-10FB-0000";
    EXPECT_EQ(som.SetUpdatePriority("VELMORA_NicProvider", priority), kAuthorityHeld);
    priority.AppKey = "first";
    EXPECT_EQ(som.SetUpdatePriority("VELMORA_NicProvider", priority), 0);
    EXPECT_EQ(som.ReleaseOperatingAuthority(kUpdateManager, std::string("first")), 0);
    EXPECT_EQ(som.GetOperatingAuthority(kUpdateManager, "second"), 0);
}

// --- Process status: it moves through a bulk run and back; a run that a kill
// cut short is reset at the next start and logged.
TEST_F(SomdTest, BulkRunsMoveTheStatusAndAKilledRunIsResetAndLogged) {
    std::vector<CVELMORA_UpdatePlans> plans, rollback;
    ASSERT_EQ(som.GetUpdatePlans(kUpdateManager, plans), 0);
    ASSERT_EQ(plans.size(), 3u);
    HRESULT result = -1;
    LONG reboot = -1, status = -1;
    UpdateInBackground(result, reboot).join();
    EXPECT_EQ(result, 0);
    EXPECT_EQ(reboot, 1);
    som.GetQELStatus(status);
    EXPECT_EQ(status, 0);
    std::vector<CVELMORA_VersionUpdateLog> logs;
    std::vector<std::string> lines;
    ASSERT_EQ(som.CollectVersionUpLog(logs), 0);
    EXPECT_EQ(logs.size(), 3u);
    ASSERT_EQ(som.CollectResultLog("k", lines), 0);
    EXPECT_EQ(lines.size(), 3u);
    ASSERT_EQ(som.GetUpdatePlans(kUpdateManager, true, rollback), 0);
    ASSERT_EQ(rollback.size(), 3u);
    EXPECT_EQ(rollback[0].NextVendorVersion, plans[0].CurrentVendorVersion);
    EXPECT_EQ(som.UpdateAll(reboot), 0);  // nothing left to update is no failure
    EXPECT_EQ(reboot, 0);
    EXPECT_EQ(som.RollbackAll(reboot), 0);
    plans.clear();
    ASSERT_EQ(som.GetUpdatePlans(kUpdateManager, plans), 0);
    EXPECT_EQ(plans.size(), 3u);

    std::thread cut = UpdateInBackground(result, reboot);
    somd.Kill();
    cut.join();
    somd.Start();
    som.GetQELStatus(status);
    EXPECT_EQ(status, 0);
    ASSERT_EQ(som.CollectResultLog("k", lines), 0);
    ASSERT_FALSE(lines.empty());
    EXPECT_NE(lines.back().find("interrupted"), std::string::npos) << lines.back();
}

}  // namespace
