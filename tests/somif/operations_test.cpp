// Typed operations end to end: update manager, status and logs, alive monitor.
#include <gtest/gtest.h>

#include "CSomIf.h"
#include "support/fake_som_service.h"
#include "support/trace_recorder.h"

namespace {

using qel_test::Action;
using qel_test::FakeSomService;
using qel_test::TempSysroot;
using qel_test::TraceRecorder;

const HRESULT kSendFailed = 0x80081001L;
const uint32_t kServiceError = 0x80001234u;  // negative, not of the transport family

class OperationsTest : public ::testing::Test {
protected:
    TempSysroot root;
    FakeSomService service{root, 1};
    CSomIf som{"ops"};
};

// --- Update manager ----------------------------------------------------------

TEST_F(OperationsTest, SettersSendTheirSections) {
    CVELMORA_UpdateSchedule update;
    update.IsAutoSetting = true;
    update.RepeatType = 1;
    update.DayOfWeek = "a";
    update.Time = "c";
    EXPECT_EQ(som.SetAutoUpdateSetting(update), 0);
    EXPECT_EQ(service.LastRequest().bytes,
              "00000074cafefeedVELMORA_UpdateManager/SetAutoUpdateSetting0000000000000109"
              "class;UpdateSchedule;;bool;IsAutoSetting;true;int;RepeatType;1;string;DayOfWeek;a;"
              "string;Date;;string;Time;c;");

    CVELMORA_DownloadSetting setting;
    CVELMORA_DownloadSchedule schedule;
    EXPECT_EQ(som.SetAutoDownloadSetting(setting, schedule), 0);
    EXPECT_EQ(service.LastRequest().method, "SetAutoDownloadSetting");
    EXPECT_EQ(service.LastRequest().body.find("class;DownloadSchedule;;"), 0u);

    EXPECT_EQ(som.DownloadAll(setting), 0);
    EXPECT_EQ(service.LastRequest().method, "DownloadAll");
    EXPECT_EQ(service.LastRequest().body.find("class;DownloadSetting;;int;DownloadType;0;"), 0u);

    CVelmora_PriorityUpdateParam param;
    param.AppKey = "k";
    EXPECT_EQ(som.SetUpdatePriority("VELMORA_NicProvider", param), 0);
    EXPECT_EQ(service.LastRequest().className, "VELMORA_NicProvider");
    EXPECT_EQ(service.LastRequest().body.find("class;Velmora_PriorityUpdateParam;;"), 0u);
}

TEST_F(OperationsTest, ResultPathsOfASetter) {
    TraceRecorder traces;
    CVELMORA_UpdateSchedule update;
    service.Push(Action::Answer("", kServiceError));
    EXPECT_EQ(som.SetAutoUpdateSetting(update), static_cast<HRESULT>(kServiceError));
    service.Push(Action::Answer("long;ReturnValue;6;"));
    EXPECT_EQ(som.SetAutoUpdateSetting(update), 6);
    service.Push(Action::Fault(Action::kCloseWithoutAnswer));
    EXPECT_EQ(som.SetAutoUpdateSetting(update), 0x80081101L);
    service.Stop();
    EXPECT_EQ(som.SetAutoUpdateSetting(update), kSendFailed);
    EXPECT_TRUE(traces.Contains(
        "[LEAVE] HRESULT CSomIf::SetAutoUpdateSetting(const CVELMORA_UpdateSchedule&), "
        "rc=18446744071562596353"));
}

TEST_F(OperationsTest, GetAutoDownloadSettingDecodesOnlyWhenNotNegative) {
    const std::string reply =
        "class;DownloadSchedule;;bool;IsAutoSetting;true;int;RepeatType;2;string;DayOfWeek;Sun;"
        "string;Date;;string;Time;04:00;class;DownloadSetting;;int;DownloadType;1;"
        "string;WebSiteUrl;https://u;";
    service.Push(Action::Answer(reply));
    CVELMORA_DownloadSetting setting;
    CVELMORA_DownloadSchedule schedule;
    EXPECT_EQ(som.GetAutoDownloadSetting(setting, schedule), 0);
    EXPECT_EQ(service.LastRequest().body, "");
    EXPECT_TRUE(schedule.IsAutoSetting);
    EXPECT_EQ(schedule.Time, "04:00");
    EXPECT_EQ(setting.DownloadType, 1);
    EXPECT_EQ(setting.WebSiteUrl, "https://u");

    service.Push(Action::Answer(reply, kServiceError));
    CVELMORA_DownloadSetting untouchedSetting;
    untouchedSetting.DownloadType = 9;
    CVELMORA_DownloadSchedule untouchedSchedule;
    untouchedSchedule.IsAutoSetting = true;
    som.GetAutoDownloadSetting(untouchedSetting, untouchedSchedule);
    EXPECT_EQ(untouchedSetting.DownloadType, 9);
    EXPECT_TRUE(untouchedSchedule.IsAutoSetting);
}

TEST_F(OperationsTest, GetAutoUpdateSettingDecodesWhateverTheResult) {
    service.Push(Action::Answer(
        "class;UpdateSchedule;;bool;IsAutoSetting;true;int;RepeatType;4;", kServiceError));
    CVELMORA_UpdateSchedule schedule;
    EXPECT_EQ(som.GetAutoUpdateSetting(schedule), static_cast<HRESULT>(kServiceError));
    EXPECT_EQ(schedule.RepeatType, 4);
    // After a failed exchange the decoder sees an empty text.
    service.Stop();
    schedule.IsAutoSetting = true;
    schedule.DayOfWeek = "kept";
    EXPECT_EQ(som.GetAutoUpdateSetting(schedule), kSendFailed);
    EXPECT_FALSE(schedule.IsAutoSetting);
    EXPECT_EQ(schedule.DayOfWeek, "kept");
}

TEST_F(OperationsTest, UpdatePlans) {
    const std::string plan =
        "string;ProviderName;nic;string;VendorName;V;string;UniqueName;U;string;DeviceId;D;"
        "string;ModuleKind;FW;int;UpdatePriority;2;string;CurrentVendorVersion;1;"
        "string;NextVendorVersion;2;string;DisplayName;N;int;UpdateJudgment;0;"
        "string;DependencyName;;";
    service.Push(Action::Answer("class[];UpdatePlansList;;" + plan + plan));
    std::vector<CVELMORA_UpdatePlans> plans;
    EXPECT_EQ(som.GetUpdatePlans("VELMORA_UpdateManager", true, plans), 0);
    EXPECT_EQ(service.LastRequest().bytes,
              "00000068cafefeedVELMORA_UpdateManager/GetUpdatePlans0000000000000016"
              "bool;Rollback;1;");
    ASSERT_EQ(plans.size(), 2u);
    EXPECT_EQ(plans[1].UpdatePriority, 2);

    EXPECT_EQ(som.GetUpdatePlans("VELMORA_UpdateManager", plans), 0);
    EXPECT_EQ(service.LastRequest().body, "");
    service.Push(Action::Answer(plan, kServiceError));
    EXPECT_EQ(som.GetUpdatePlans("VELMORA_UpdateManager", false, plans),
              static_cast<HRESULT>(kServiceError));
    EXPECT_EQ(service.LastRequest().body, "bool;Rollback;0;");
    EXPECT_EQ(plans.size(), 2u);
    // A reply beyond the 8 KiB buffer is cut; the records that fit are read.
    std::string many = "class[];UpdatePlansList;;";
    while (many.size() < 9000) many += plan;
    service.Push(Action::Answer(many));
    std::vector<CVELMORA_UpdatePlans> cut;
    EXPECT_EQ(som.GetUpdatePlans("C", cut), 0);
    EXPECT_GT(cut.size(), 10u);
    EXPECT_LT(cut.size(), 9000 / plan.size());
}

TEST_F(OperationsTest, AuthorityGoesToTheNamedClass) {
    TraceRecorder traces;
    service.Push(Action::Answer("", 0x00000001u));
    EXPECT_EQ(som.GetOperatingAuthority("VELMORA_Other", "key-1"), 1);
    EXPECT_EQ(service.LastRequest().bytes,
              "00000067cafefeedVELMORA_Other/GetOperatingAuthority0000000000000020"
              "string;AppKey;key-1;");
    EXPECT_EQ(som.ReleaseOperatingAuthority("VELMORA_Other", std::string("key-1")), 0);
    EXPECT_EQ(service.LastRequest().className, "VELMORA_Other");
    EXPECT_EQ(service.LastRequest().method, "ReleaseOperatingAuthority");
    EXPECT_TRUE(traces.Contains(
        "[LEAVE] HRESULT CSomIf::GetOperatingAuthority(std::string, std::string), rc=1"));
}

TEST_F(OperationsTest, BulkRunsAndReboot) {
    LONG kind = 42;
    service.Push(Action::Answer("long;Reboot;1;"));
    EXPECT_EQ(som.UpdateAll(kind), 0);
    EXPECT_EQ(kind, 1);
    EXPECT_EQ(service.LastRequest().bytes,
              "00000063cafefeedVELMORA_UpdateManager/UpdateAll0000000000000000");
    service.Push(Action::Answer("string;Other;x;"));
    EXPECT_EQ(som.RollbackAll(kind), 0);
    EXPECT_EQ(kind, 0);
    kind = 42;
    service.Push(Action::Answer("long;Reboot;2;", kServiceError));
    som.RollbackAll(kind);
    EXPECT_EQ(kind, 42);
    EXPECT_EQ(som.ExecuteReboot(), 0);
    EXPECT_EQ(service.LastRequest().bytes,
              "00000067cafefeedVELMORA_UpdateManager/ExecuteReboot0000000000000000");
}

// --- Status, versions and logs -----------------------------------------------------

TEST_F(OperationsTest, VersionsAndVersionLog) {
    service.Push(Action::Answer(
        "string;QelVersionInfoList;;string;GroupName;core;string;FileName;libqel.so;"
        "string;FileVersion;5.2;"));
    std::vector<CVELMORA_QelVersionInfo> versions;
    EXPECT_EQ(som.CollectQelVersion(versions), 0);
    EXPECT_EQ(service.LastRequest().className, "VELMORA_QelVersion");
    ASSERT_EQ(versions.size(), 1u);
    EXPECT_EQ(versions[0].FileName, "libqel.so");

    service.Push(Action::Answer(
        "string;VersionUpdateLogList;;string;ProviderName;nic;string;DateTime;2026-11-01;"
        "string;VendorName;V;string;UniqueName;U;string;ModuleKind;FW;"
        "string;BeforeVersion;1;string;AfterVersion;2;"));
    std::vector<CVELMORA_VersionUpdateLog> logs;
    EXPECT_EQ(som.CollectVersionUpLog(logs), 0);
    EXPECT_EQ(service.LastRequest().className, "VELMORA_LogManager");
    ASSERT_EQ(logs.size(), 1u);
    EXPECT_EQ(logs[0].AfterVersion, "2");
    service.Push(Action::Answer("string;GroupName;x;", kServiceError));
    som.CollectQelVersion(versions);
    EXPECT_EQ(versions.size(), 1u);
}

TEST_F(OperationsTest, DownloadAndResultLogs) {
    TraceRecorder traces;
    service.Push(Action::Answer("string[];Lines;first!#second;string[];More;third;"));
    std::vector<std::string> lines;
    EXPECT_EQ(som.CollectDownloadLog("app", lines), 0);
    EXPECT_EQ(service.LastRequest().bytes,
              "00000069cafefeedVELMORA_LogManager/CollectDownloadLog0000000000000018"
              "string;AppKey;app;");
    EXPECT_EQ(lines, (std::vector<std::string>{"first", "second", "third"}));
    const std::string vec =
        "std::vector<std::basic_string<char, std::char_traits<char>, std::allocator<char> >, "
        "std::allocator<std::basic_string<char, std::char_traits<char>, std::allocator<char> > > >&";
    EXPECT_TRUE(traces.Contains("[ENTER] HRESULT CSomIf::CollectDownloadLog(std::string, " + vec +
                                ") app"));

    service.Push(Action::Answer("string[];Lines;x;", 0x00000003u));
    EXPECT_EQ(som.CollectResultLog("app", lines), 3);
    EXPECT_EQ(lines.size(), 3u);
    EXPECT_TRUE(
        traces.Contains("[ENTER] HRESULT CSomIf::CollectResultLog(std::string, " + vec + ")"));

    std::vector<std::string> empty;
    EXPECT_EQ(som.getManagerLog("CollectResultLog", nullptr, empty), 0);
    EXPECT_EQ(service.LastRequest().bytes,
              "00000067cafefeedVELMORA_LogManager/CollectResultLog0000000000000000");

    service.Push(Action::Fault(Action::kCloseWithoutAnswer));
    EXPECT_EQ(som.getManagerLog("CollectResultLog", "", empty), 0x80081101L);
    service.Stop();
    EXPECT_EQ(som.getManagerLog("CollectResultLog", "", empty), -1);
    EXPECT_EQ(som.CollectDownloadLog("app", lines), 0xFFFFFFFFL);
    EXPECT_TRUE(traces.Contains("[LEAVE] HRESULT CSomIf::getManagerLog(const char*, const char*, " +
                                vec + "), rc=18446744073709551615"));
}

TEST_F(OperationsTest, ProcessStatus) {
    struct Case {
        const char* file;  // null: no file
        LONG status;
        const char* shown;
    };
    const Case cases[] = {
        {"[icon]\nstatus=download\ntype=rollback\n", 0x8003, "download"},
        {"[icon]\nstatus=update\ntype=update\n", 0x8001, "update"},
        {"[icon]\nstatus=updated-now\ntype=rollback\n", 0x8002, "rollback"},
        {"[icon]\nstatus=updatex\n", 0x8001, "updatex"},
        {"[icon]\nstatus=idle\n", 0, "idle"},
        {"[other]\nstatus=download\n", 0, ""},
        {"not an ini file at all \x01\x02", 0, ""},
        {nullptr, 0, ""},
    };
    for (const Case& c : cases) {
        if (c.file != nullptr) {
            root.WriteFile("/opt/velmora/qel/ProcessStatus.ini", c.file);
        } else {
            root.RemoveFile("/opt/velmora/qel/ProcessStatus.ini");
        }
        TraceRecorder traces;
        LONG status = 77;
        EXPECT_EQ(som.GetQELStatus(status), 0);
        EXPECT_EQ(status, c.status) << (c.file ? c.file : "no file");
        char expected[160];
        std::snprintf(expected, sizeof expected,
                      "HRESULT CSomIf::GetQELStatus(LONG&) ### status=%s, result=0x%x", c.shown,
                      static_cast<unsigned>(c.status));
        qel_test::TraceLine line;
        ASSERT_TRUE(traces.Find(expected, &line)) << expected;
        EXPECT_EQ(line.level, 1);
    }
}

// --- Alive monitor -----------------------------------------------------------------

TEST_F(OperationsTest, AliveMonitorRequests) {
    EXPECT_EQ(som.AliveMonitorUpdateParameters(), 0);
    EXPECT_EQ(service.LastRequest().bytes,
              "00000081cafefeedVELMORA_ToolServiceWD/AliveMonitorUpdateParameter0000000000000000");
    EXPECT_EQ(som.AliveMonitorClearParameters(), 0);
    EXPECT_EQ(service.LastRequest().method, "AliveMonitorClearParameter");
    EXPECT_EQ(som.AliveMonitorSetParameter("Interval", "30"), 0);
    EXPECT_EQ(service.LastRequest().bytes,
              "00000078cafefeedVELMORA_ToolServiceWD/AliveMonitorSetParameter0000000000000037"
              "string;Name;Interval;string;Value;30;");
}

TEST_F(OperationsTest, AliveMonitorGetParameterReadsValueThenType) {
    struct Case {
        const char* body;
        uint32_t result;
        const char* value;
        unsigned type;
    };
    const Case cases[] = {
        {"string;Value;abc;int;Type;2;", 0, "abc", 2},
        {"int;Type;5;string;Value;abc;", 0, "old", 5},
        {"string;Value;abc;string;Other;2;", 0, "abc", 0},
        {"string;Value;abc;", 0, "abc", 9},
        {"string;Value;abc;int;Type;2;", kServiceError, "old", 9},
        {"", 0, "old", 9},
    };
    for (const Case& c : cases) {
        service.Push(Action::Answer(c.body, c.result));
        std::string value = "old";
        unsigned type = 9;
        som.AliveMonitorGetParameter("Interval", value, type);
        EXPECT_EQ(service.LastRequest().body, "string;Name;Interval;");
        EXPECT_EQ(value, c.value) << c.body;
        EXPECT_EQ(type, c.type) << c.body;
    }
}

}  // namespace
