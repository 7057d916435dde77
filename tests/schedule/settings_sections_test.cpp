// Settings sections: byte-exact writers, positional readers, round trips.
#include <gtest/gtest.h>

#include "CUpDownSchedule.h"
#include "support/text_buffer.h"
#include "support/trace_recorder.h"

namespace {

using qel_test::TextBuffer;

CVELMORA_UpdateSchedule ExampleSchedule() {
    CVELMORA_UpdateSchedule s;
    s.IsAutoSetting = true;
    s.RepeatType = 1;
    s.DayOfWeek = "a";
    s.Date = "";
    s.Time = "c";
    return s;
}

CVELMORA_DownloadSetting ExampleSetting() {
    CVELMORA_DownloadSetting s;
    s.DownloadType = -1;
    s.WebSiteUrl = "https://updates.example/qel";
    s.ProxyAddress = "proxy.local";
    s.ProxyPort = "80";
    s.ProxyUser = "user";
    s.ProxyPassword = "p;q";
    s.CacheServerPath = "//cache/share";
    s.CacheServerUser = "cacheuser";
    s.CacheServerPassword = "c%!@;";
    s.TempDriveLetter = "D:";
    s.ExternalMediaPath = "/media/usb";
    return s;
}

class SettingsSectionsTest : public ::testing::Test {
protected:
    CUpDownSchedule codec{"sched"};
};

TEST_F(SettingsSectionsTest, WritersAreByteExact) {
    std::string out;
    codec.toString(ExampleSchedule(), out);
    EXPECT_EQ(out,
              "class;UpdateSchedule;;bool;IsAutoSetting;true;int;RepeatType;1;string;DayOfWeek;a;"
              "string;Date;;string;Time;c;");
    out.clear();
    codec.toString(ExampleSetting(), out);
    EXPECT_EQ(out,
              "class;DownloadSetting;;int;DownloadType;-1;string;WebSiteUrl;https://updates.example/"
              "qel;string;ProxyAddress;proxy.local;string;ProxyPort;80;string;ProxyUser;user;"
              "string;ProxyPassword;p%!@q;string;CacheServerPath;//cache/share;string;"
              "CacheServerUser;cacheuser;string;CacheServerPassword;c%!@%!@;string;TempDriveLetter;"
              "D:;string;ExternalMediaPath;/media/usb;");
    out.clear();
    CVelmora_PriorityUpdateParam param;
    param.AppKey = "k";
    param.UpdatePriority = 4000000000u;
    param.VendorName = "V";
    param.DeviceID = "D";
    param.ModuleKind = "FW";
    codec.toString(param, out);
    EXPECT_EQ(out,
              "class;Velmora_PriorityUpdateParam;;string;AppKey;k;uint;UpdatePriority;4000000000;"
              "string;VendorName;V;string;DeviceID;D;string;ModuleKind;FW;");
}

TEST_F(SettingsSectionsTest, WritersAppendAndCombinedPutsTheScheduleFirst) {
    std::string out = "x";
    codec.toString(ExampleSchedule(), out);
    codec.toString(ExampleSchedule(), out);
    EXPECT_EQ(out.find("class;UpdateSchedule;;", 1), 1u);
    EXPECT_EQ(out.rfind("class;UpdateSchedule;;"), 1u + (out.size() - 1) / 2);
    std::string combined;
    CVELMORA_DownloadSchedule schedule;
    codec.toString(ExampleSetting(), schedule, combined);
    EXPECT_EQ(combined.find("class;DownloadSchedule;;"), 0u);
    EXPECT_NE(combined.find("class;DownloadSetting;;"), std::string::npos);
}

TEST_F(SettingsSectionsTest, CombinedRoundTripGivesBothRecordsBack) {
    CVELMORA_DownloadSchedule schedule;
    schedule.IsAutoSetting = true;
    schedule.RepeatType = 3;
    schedule.DayOfWeek = "Mon";
    schedule.Date = "2026-11-23";
    schedule.Time = "03:00";
    std::string text;
    codec.toString(ExampleSetting(), schedule, text);
    TextBuffer buffer(text);
    CVELMORA_DownloadSchedule readSchedule;
    CVELMORA_DownloadSetting readSetting;
    codec.toObject(buffer.get(), readSchedule, readSetting);
    EXPECT_TRUE(readSchedule.IsAutoSetting);
    EXPECT_EQ(readSchedule.RepeatType, 3);
    EXPECT_EQ(readSchedule.Date, "2026-11-23");
    EXPECT_EQ(readSchedule.Time, "03:00");
    const CVELMORA_DownloadSetting expected = ExampleSetting();
    EXPECT_EQ(readSetting.DownloadType, -1);
    EXPECT_EQ(readSetting.ProxyPassword, "p;q");
    EXPECT_EQ(readSetting.CacheServerPassword, "c;;");  // "%!@" in a value reads back as ";"
    EXPECT_EQ(readSetting.ExternalMediaPath, expected.ExternalMediaPath);
    EXPECT_EQ(readSetting.WebSiteUrl, expected.WebSiteUrl);
}

TEST_F(SettingsSectionsTest, ReaderIsPositional) {
    struct Case {
        const char* what;
        const char* text;
        bool isAuto;
        int repeat;
        const char* day;
        const char* date;
        const char* time;
    };
    const Case cases[] = {
        {"complete", "class;UpdateSchedule;;bool;IsAutoSetting;true;int;RepeatType;2;"
                     "string;DayOfWeek;a;string;Date;b;string;Time;c;",
         true, 2, "a", "b", "c"},
        {"no flag item", "class;UpdateSchedule;;int;RepeatType;2;string;DayOfWeek;a;"
                         "string;Date;b;string;Time;c;",
         false, 2, "a", "b", "c"},
        {"Date before DayOfWeek", "class;UpdateSchedule;;bool;IsAutoSetting;true;int;RepeatType;2;"
                                  "string;Date;b;string;DayOfWeek;a;string;Time;c;",
         true, 2, "old", "b", "old"},
        {"empty body", "", false, 5, "old", "old", "old"},
        {"flag written as 1", "class;UpdateSchedule;;bool;IsAutoSetting;1;int;RepeatType;2;",
         false, 2, "old", "old", "old"},
        {"truncated after RepeatType", "class;UpdateSchedule;;bool;IsAutoSetting;true;"
                                       "int;RepeatType;7;string;DayOfWeek;a",
         true, 7, "", "old", "old"},
        {"missing number with items left", "class;UpdateSchedule;;bool;IsAutoSetting;true;"
                                           "string;DayOfWeek;a;",
         true, 0, "a", "old", "old"},
    };
    for (const Case& c : cases) {
        CVELMORA_UpdateSchedule s;
        s.IsAutoSetting = true;
        s.RepeatType = 5;
        s.DayOfWeek = s.Date = s.Time = "old";
        TextBuffer buffer(c.text);
        codec.toObject(buffer.get(), s);
        EXPECT_EQ(s.IsAutoSetting, c.isAuto) << c.what;
        EXPECT_EQ(s.RepeatType, c.repeat) << c.what;
        EXPECT_EQ(s.DayOfWeek, c.day) << c.what;
        EXPECT_EQ(s.Date, c.date) << c.what;
        EXPECT_EQ(s.Time, c.time) << c.what;
    }
}

TEST_F(SettingsSectionsTest, PriorityReaderStartsAtTheAppKeyItem) {
    const std::string section =
        "class;Velmora_PriorityUpdateParam;;string;AppKey;k;uint;UpdatePriority;7;"
        "string;VendorName;V;string;DeviceID;D;string;ModuleKind;FW;";
    TextBuffer buffer(section);
    CVelmora_PriorityUpdateParam param;
    param.AppKey = "old";
    param.UpdatePriority = 9;
    codec.toObject(buffer.get(), param);  // at the class item: nothing matches
    EXPECT_EQ(param.AppKey, "old");
    EXPECT_EQ(param.UpdatePriority, 0u);
    codec.toObject(buffer.at(section.find("string;AppKey")), param);
    EXPECT_EQ(param.AppKey, "k");
    EXPECT_EQ(param.UpdatePriority, 7u);
    EXPECT_EQ(param.ModuleKind, "FW");
    TextBuffer negative("string;AppKey;k;int;UpdatePriority;-1;");
    codec.toObject(negative.get(), param);
    EXPECT_EQ(param.UpdatePriority, 0xFFFFFFFFu);
}

TEST_F(SettingsSectionsTest, TracesUnderTheCodecsName) {
    qel_test::TraceRecorder traces;
    CUpDownSchedule named("caller");
    std::string out;
    named.toString(ExampleSchedule(), out);
    TextBuffer empty("");
    CVELMORA_UpdateSchedule s;
    named.toObject(empty.get(), s);
    const std::vector<std::string> expected = {
        "[ENTER] CUpDownSchedule::CUpDownSchedule(std::string)",
        "[LEAVE] CUpDownSchedule::CUpDownSchedule(std::string)",
        "[ENTER] void CUpDownSchedule::toString(const CVELMORA_UpdateSchedule&, std::string&)",
        "[LEAVE] void CUpDownSchedule::toString(const CVELMORA_UpdateSchedule&, std::string&)",
        "[ENTER] void CUpDownSchedule::toObject(char*, CVELMORA_UpdateSchedule&)",
        "[LEAVE] void CUpDownSchedule::toObject(char*, CVELMORA_UpdateSchedule&)",
    };
    EXPECT_EQ(traces.Texts(), expected);
    EXPECT_EQ(traces.Lines()[2].source, "caller");
}

}  // namespace
