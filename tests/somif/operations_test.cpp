// Typed operations end to end through the scripted service: the exact
// request bytes, the decoding of replies, and outputs left alone on failure.
#include <gtest/gtest.h>

#include <functional>

#include "CSomIf.h"
#include "support/fake_som_service.h"
#include "support/trace_recorder.h"

namespace {

using qel_test::Action;
using qel_test::FakeSomService;

const uint32_t kServiceError = 0x80001234u;  // negative, not of the transport family

class OperationsTest : public ::testing::Test {
  protected:
    qel_test::TempSysroot root;
    FakeSomService service{root, 1};
    CSomIf som{"ops"};
};

TEST_F(OperationsTest, RequestsAreByteExact) {
    CVELMORA_UpdateSchedule update;
    update.IsAutoSetting = true;
    update.RepeatType = 1;
    update.DayOfWeek = "a";
    update.Time = "c";
    CVELMORA_DownloadSetting setting;
    CVELMORA_DownloadSchedule schedule;
    CVelmora_PriorityUpdateParam priority;
    LONG kind = 0;
    std::vector<CVELMORA_UpdatePlans> plans;
    std::vector<std::string> lines;
    const std::pair<std::function<HRESULT()>, std::string> cases[] = {
        {[&] { return som.SetAutoUpdateSetting(update); },
         "00000074cafefeedVELMORA_UpdateManager/SetAutoUpdateSetting0000000000000109class;"
         "UpdateSchedule;;bool;IsAutoSetting;true;int;RepeatType;1;string;DayOfWeek;a;string;"
         "Date;;string;Time;c;"},
        {[&] { return som.GetUpdatePlans("VELMORA_UpdateManager", true, plans); },
         "00000068cafefeedVELMORA_UpdateManager/GetUpdatePlans0000000000000016bool;Rollback;1;"},
        {[&] { return som.GetOperatingAuthority("VELMORA_Other", "key-1"); },
         "00000067cafefeedVELMORA_Other/GetOperatingAuthority0000000000000020string;AppKey;key-1;"},
        {[&] { return som.UpdateAll(kind); },
         "00000063cafefeedVELMORA_UpdateManager/UpdateAll0000000000000000"},
        {[&] { return som.ExecuteReboot(); },
         "00000067cafefeedVELMORA_UpdateManager/ExecuteReboot0000000000000000"},
        {[&] { return som.CollectDownloadLog("app", lines); },
         "00000069cafefeedVELMORA_LogManager/CollectDownloadLog0000000000000018string;AppKey;app;"},
        {[&] { return som.getManagerLog("CollectResultLog", nullptr, lines); },
         "00000067cafefeedVELMORA_LogManager/CollectResultLog0000000000000000"},
        {[&] { return som.AliveMonitorUpdateParameters(); },
         "00000081cafefeedVELMORA_ToolServiceWD/AliveMonitorUpdateParameter0000000000000000"},
        {[&] { return som.AliveMonitorSetParameter("Interval", "30"); },
         "00000078cafefeedVELMORA_ToolServiceWD/AliveMonitorSetParameter0000000000000037"
         "string;Name;Interval;string;Value;30;"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.first(), 0);
        EXPECT_EQ(service.LastRequest().bytes, c.second);
    }
    // The other request bodies start with their sections.
    const std::pair<std::function<HRESULT()>, std::string> bodies[] = {
        {[&] { return som.SetAutoDownloadSetting(setting, schedule); }, "class;DownloadSchedule;;"},
        {[&] { return som.DownloadAll(setting); }, "class;DownloadSetting;;int;DownloadType;0;"},
        {[&] { return som.SetUpdatePriority("VELMORA_Nic", priority); },
         "class;Velmora_PriorityUpdateParam;;"},
    };
    for (const auto& c : bodies) {
        EXPECT_EQ(c.first(), 0);
        EXPECT_EQ(service.LastRequest().body.find(c.second), 0u) << c.second;
    }
    EXPECT_EQ(service.LastRequest().className, "VELMORA_Nic");
}

TEST_F(OperationsTest, ResultPathsAndTheirTraces) {
    qel_test::TraceRecorder traces;
    CVELMORA_UpdateSchedule update;
    service.Push(Action::Answer("", kServiceError));
    EXPECT_EQ(som.SetAutoUpdateSetting(update), static_cast<HRESULT>(kServiceError));
    service.Push(Action::Answer("long;ReturnValue;6;"));
    EXPECT_EQ(som.SetAutoUpdateSetting(update), 6);
    service.Push(Action::Fault(Action::kCloseWithoutAnswer));
    EXPECT_EQ(som.GetOperatingAuthority("C", "k"), 0x80081101L);
    EXPECT_TRUE(
        traces.Contains("[LEAVE] HRESULT CSomIf::GetOperatingAuthority(std::string, "
                        "std::string), rc=-2146955007"));
    service.Stop();
    EXPECT_EQ(som.SetAutoUpdateSetting(update), 0x80081001L);
    EXPECT_TRUE(
        traces.Contains("[LEAVE] HRESULT CSomIf::SetAutoUpdateSetting(const "
                        "CVELMORA_UpdateSchedule&), rc=18446744071562596353"));
}

TEST_F(OperationsTest, ReadersDecodeOnlyWhenNotNegative) {
    const std::string download =
        "class;DownloadSchedule;;bool;IsAutoSetting;true;int;RepeatType;2;string;DayOfWeek;Sun;"
        "string;Date;;string;Time;04:00;class;DownloadSetting;;int;DownloadType;1;";
    const std::string plan =
        "string;ProviderName;nic;string;VendorName;V;string;UniqueName;U;string;DeviceId;D;"
        "string;ModuleKind;FW;int;UpdatePriority;2;string;CurrentVendorVersion;1;"
        "string;NextVendorVersion;2;string;DisplayName;N;int;UpdateJudgment;0;"
        "string;DependencyName;;";
    for (uint32_t result : {0u, kServiceError}) {
        const bool decoded = result == 0;
        CVELMORA_DownloadSetting setting;
        CVELMORA_DownloadSchedule schedule;
        service.Push(Action::Answer(download, result));
        som.GetAutoDownloadSetting(setting, schedule);
        EXPECT_EQ(schedule.Time == "04:00" && setting.DownloadType == 1, decoded);
        std::vector<CVELMORA_UpdatePlans> plans;
        service.Push(Action::Answer("class[];UpdatePlansList;;" + plan + plan, result));
        som.GetUpdatePlans("C", plans);
        EXPECT_EQ(plans.size(), decoded ? 2u : 0u);
        std::vector<CVELMORA_QelVersionInfo> versions;
        service.Push(Action::Answer("string;GroupName;core;string;FileName;f;", result));
        som.CollectQelVersion(versions);
        EXPECT_EQ(versions.size(), decoded ? 1u : 0u);
        std::vector<CVELMORA_VersionUpdateLog> logs;
        service.Push(Action::Answer("string;ProviderName;nic;string;DateTime;d;", result));
        som.CollectVersionUpLog(logs);
        EXPECT_EQ(logs.size(), decoded ? 1u : 0u);
        LONG kind = 42;
        service.Push(Action::Answer("long;Reboot;1;", result));
        som.UpdateAll(kind);
        EXPECT_EQ(kind, decoded ? 1 : 42);
        std::string value = "old";
        unsigned type = 9;
        service.Push(Action::Answer("string;Value;abc;int;Type;2;", result));
        som.AliveMonitorGetParameter("Interval", value, type);
        EXPECT_EQ(value + std::to_string(type), decoded ? "abc2" : "old9");
    }
    // The update schedule is decoded whatever the result, an empty text after
    // a failed exchange.
    CVELMORA_UpdateSchedule update;
    service.Push(Action::Answer("class;UpdateSchedule;;bool;IsAutoSetting;true;int;RepeatType;4;",
                                kServiceError));
    som.GetAutoUpdateSetting(update);
    EXPECT_EQ(update.RepeatType, 4);
    service.Stop();
    update.DayOfWeek = "kept";
    som.GetAutoUpdateSetting(update);
    EXPECT_FALSE(update.IsAutoSetting);
    EXPECT_EQ(update.DayOfWeek, "kept");
}

TEST_F(OperationsTest, ReplyDetails) {
    LONG kind = 42;
    service.Push(Action::Answer("string;Other;x;"));
    EXPECT_EQ(som.RollbackAll(kind), 0);
    EXPECT_EQ(kind, 0);  // no "Reboot" item
    const std::pair<const char*, std::string> alive[] = {
        {"int;Type;5;string;Value;abc;", "old5"},      // "Value" not first: kept
        {"string;Value;abc;string;Other;2;", "abc0"},  // another name where "Type" stands
        {"string;Value;abc;", "abc9"},                 // nothing to read: kept
    };
    for (const auto& c : alive) {
        service.Push(Action::Answer(c.first));
        std::string value = "old";
        unsigned type = 9;
        som.AliveMonitorGetParameter("Interval", value, type);
        EXPECT_EQ(value + std::to_string(type), c.second) << c.first;
    }
    // A reply of plans beyond the 8 KiB buffer is cut; the records that fit are read.
    std::string many = "class[];UpdatePlansList;;";
    while (many.size() < 9000)
        many += "string;ProviderName;nic;string;VendorName;V;";
    service.Push(Action::Answer(many));
    std::vector<CVELMORA_UpdatePlans> cut;
    EXPECT_EQ(som.GetUpdatePlans("C", cut), 0);
    EXPECT_GT(cut.size(), 100u);
    EXPECT_LT(cut.size(), 205u);
}

TEST_F(OperationsTest, LogsAndTheirResults) {
    qel_test::TraceRecorder traces;
    std::vector<std::string> lines;
    service.Push(Action::Answer("string[];Lines;first!#second;string[];More;third;"));
    EXPECT_EQ(som.CollectDownloadLog("app", lines), 0);
    EXPECT_EQ(lines, (std::vector<std::string>{"first", "second", "third"}));
    service.Push(Action::Answer("string[];Lines;x;", 0x00000003u));
    EXPECT_EQ(som.CollectResultLog("app", lines), 3);
    EXPECT_EQ(lines.size(), 3u);  // untouched on a non-zero result
    const std::string vec =
        "std::vector<std::basic_string<char, std::char_traits<char>, std::allocator<char> >, "
        "std::allocator<std::basic_string<char, std::char_traits<char>, std::allocator<char> > > "
        ">&";
    EXPECT_TRUE(traces.Contains("[ENTER] HRESULT CSomIf::CollectDownloadLog(std::string, " + vec +
                                ") app"));
    EXPECT_TRUE(
        traces.Contains("[ENTER] HRESULT CSomIf::CollectResultLog(std::string, " + vec + ")"));
    service.Push(Action::Fault(Action::kCloseWithoutAnswer));
    EXPECT_EQ(som.getManagerLog("CollectResultLog", "", lines), 0x80081101L);
    service.Stop();
    EXPECT_EQ(som.getManagerLog("CollectResultLog", "", lines), -1);
    EXPECT_EQ(som.CollectDownloadLog("app", lines), 0xFFFFFFFFL);
    EXPECT_TRUE(traces.Contains("[LEAVE] HRESULT CSomIf::getManagerLog(const char*, const char*, " +
                                vec + "), rc=18446744073709551615"));
}

TEST_F(OperationsTest, ProcessStatusFile) {
    const struct {
        const char* file;  // null: no file
        LONG status;
        const char* shown;
    } cases[] = {
        {"[icon]\nstatus=download\ntype=rollback\n", 0x8003, "download"},
        {"[icon]\nstatus=update\ntype=update\n", 0x8001, "update"},
        {"[icon]\nstatus=updated-now\ntype=rollback\n", 0x8002, "rollback"},
        {"[icon]\nstatus=idle\n", 0, "idle"},
        {"[other]\nstatus=download\n", 0, ""},
        {"not an ini file at all \x01\x02", 0, ""},
        {nullptr, 0, ""},
    };
    for (const auto& c : cases) {
        if (c.file != nullptr) {
            root.WriteFile("/opt/velmora/qel/ProcessStatus.ini", c.file);
        } else {
            root.RemoveFile("/opt/velmora/qel/ProcessStatus.ini");
        }
        qel_test::TraceRecorder traces;
        LONG status = 77;
        EXPECT_EQ(som.GetQELStatus(status), 0);
        EXPECT_EQ(status, c.status);
        char line[160];
        std::snprintf(line, sizeof line,
                      "HRESULT CSomIf::GetQELStatus(LONG&) ### status=%s, result=0x%x", c.shown,
                      static_cast<unsigned>(c.status));
        qel_test::TraceLine found;
        ASSERT_TRUE(traces.Find(line, &found)) << line;
        EXPECT_EQ(found.level, 1);
    }
}

}  // namespace
