// Settings sections: writers with distinct values, positional readers, round
// trips, and the trace lines under the codec's name.
#include <gtest/gtest.h>

#include "CUpDownSchedule.h"
#include "common/record_json.h"
#include "support/text_buffer.h"
#include "support/trace_recorder.h"

namespace {

using qel_test::TextBuffer;

template <class Record>
Record From(const char* json) {
    return nlohmann::json::parse(json).get<Record>();
}

TEST(SettingsSectionsTest, WritersAppendAndEscapeReadersArePositional) {
    CUpDownSchedule codec("sched");
    std::string out = "x";
    codec.toString(From<CVelmora_PriorityUpdateParam>(R"({"AppKey":"k","UpdatePriority":4e9})"),
                   out);
    EXPECT_EQ(out,
              "xclass;Velmora_PriorityUpdateParam;;string;AppKey;k;uint;UpdatePriority;4000000000;"
              "string;VendorName;;string;DeviceID;;string;ModuleKind;;");
    // The schedule first, then the setting; "%!@" in a value reads back as ";".
    const auto schedule = From<CVELMORA_DownloadSchedule>(
        R"({"IsAutoSetting":true,"RepeatType":3,"DayOfWeek":"Mon","Date":"1","Time":"03:00"})");
    auto setting = From<CVELMORA_DownloadSetting>(
        R"({"DownloadType":-1,"WebSiteUrl":"w","ProxyAddress":"a","ProxyPort":"80",)"
        R"("ProxyUser":"u","ProxyPassword":"p;q","CacheServerPath":"c","CacheServerUser":"v",)"
        R"("CacheServerPassword":"c%!@;","TempDriveLetter":"T","ExternalMediaPath":"/m"})");
    const std::string settingText =
        "class;DownloadSetting;;int;DownloadType;-1;string;WebSiteUrl;w;string;ProxyAddress;a;"
        "string;ProxyPort;80;string;ProxyUser;u;string;ProxyPassword;p%!@q;string;CacheServerPath;"
        "c;string;CacheServerUser;v;string;CacheServerPassword;c%!@%!@;string;TempDriveLetter;T;"
        "string;ExternalMediaPath;/m;";
    std::string both, alone;
    codec.toString(setting, schedule, both);
    codec.toString(setting, alone);
    EXPECT_EQ(alone, settingText);
    EXPECT_EQ(both,
              "class;DownloadSchedule;;bool;IsAutoSetting;true;int;RepeatType;3;string;DayOfWeek;"
              "Mon;string;Date;1;string;Time;03:00;" +
                  settingText);
    TextBuffer buffer(both);
    CVELMORA_DownloadSchedule s;
    CVELMORA_DownloadSetting d;
    codec.toObject(buffer.get(), s, d);
    setting.CacheServerPassword = "c;;";
    EXPECT_EQ(nlohmann::json(s), nlohmann::json(schedule));
    EXPECT_EQ(nlohmann::json(d), nlohmann::json(setting));
    // The readers are positional.
    // Expected: flag, repeat type, day, date, time (starting from true, 5, "old"s).
    // clang-format off
    const std::pair<const char*, const char*> cases[] = {
        {"class;UpdateSchedule;;bool;IsAutoSetting;true;int;RepeatType;2;string;DayOfWeek;a;"
         "string;Date;b;string;Time;c;", "1 2 a b c"},
        {"class;UpdateSchedule;;int;RepeatType;2;string;DayOfWeek;a;string;Date;b;string;Time;c;",
         "0 2 a b c"},  // no flag item
        {"class;UpdateSchedule;;bool;IsAutoSetting;true;int;RepeatType;2;string;Date;b;"
         "string;DayOfWeek;a;string;Time;c;", "1 2 old b old"},  // out of place: not found
        {"", "0 5 old old old"}, {"class;UpdateSchedule;;bool;IsAutoSetting;1;int;RepeatType;2;",
         "0 2 old old old"},
        {"class;UpdateSchedule;;bool;IsAutoSetting;true;int;RepeatType;7;string;DayOfWeek;a",
         "1 7  old old"},  // cut inside the matching item
        {"class;UpdateSchedule;;bool;IsAutoSetting;true;string;DayOfWeek;a;", "1 0 a old old"}};
    // clang-format on
    for (const auto& c : cases) {
        auto s = From<CVELMORA_UpdateSchedule>(
            R"({"IsAutoSetting":true,"RepeatType":5,"DayOfWeek":"old","Date":"old","Time":"old"})");
        TextBuffer buffer(c.first);
        codec.toObject(buffer.get(), s);
        EXPECT_EQ(std::to_string(s.IsAutoSetting) + " " + std::to_string(s.RepeatType) + " " +
                      s.DayOfWeek + " " + s.Date + " " + s.Time,
                  c.second)
            << c.first;
    }
    const std::string section =
        "class;Velmora_PriorityUpdateParam;;string;AppKey;k;uint;UpdatePriority;-1;"
        "string;VendorName;V;string;DeviceID;D;string;ModuleKind;FW;";
    TextBuffer priority(section);
    auto param = From<CVelmora_PriorityUpdateParam>(R"({"AppKey":"old","UpdatePriority":9})");
    codec.toObject(priority.get(), param);  // at the class item nothing matches
    EXPECT_EQ(param.AppKey + std::to_string(param.UpdatePriority), "old0");
    codec.toObject(priority.at(section.find("string;AppKey")), param);
    EXPECT_EQ(param.AppKey + param.ModuleKind + std::to_string(param.UpdatePriority),
              "kFW4294967295");  // the 32-bit pattern of -1
}

TEST(SettingsSectionsTest, TracesUnderTheCodecsName) {
    qel_test::TraceRecorder traces;
    {
        CUpDownSchedule named("caller");
        std::string out;
        TextBuffer empty("");
        CVelmora_PriorityUpdateParam p;
        CVELMORA_UpdateSchedule u;
        CVELMORA_DownloadSetting d;
        CVELMORA_DownloadSchedule s;
        named.toString(p, out);
        named.toString(u, out);
        named.toString(d, out);
        named.toString(d, s, out);
        named.toObject(empty.get(), p);
        named.toObject(empty.get(), u);
        named.toObject(empty.get(), s, d);
    }
    const std::string to = "void CUpDownSchedule::to", setting = "const CVELMORA_DownloadSetting&";
    std::vector<std::string> expected, got;
    for (std::string signature :
         {std::string("CUpDownSchedule::CUpDownSchedule(std::string)"),
          to + "String(const CVelmora_PriorityUpdateParam&, std::string&)",
          to + "String(const CVELMORA_UpdateSchedule&, std::string&)",
          to + "String(" + setting + ", std::string&)",
          to + "String(" + setting + ", const CVELMORA_DownloadSchedule&, std::string&)",
          to + "Object(char*, CVelmora_PriorityUpdateParam&)",
          to + "Object(char*, CVELMORA_UpdateSchedule&)",
          to + "Object(char*, CVELMORA_DownloadSchedule&, CVELMORA_DownloadSetting&)",
          std::string("virtual CUpDownSchedule::~CUpDownSchedule()")})
        for (const char* edge : {"caller [ENTER] ", "caller [LEAVE] "})
            expected.push_back(edge + signature);
    for (const qel_test::TraceLine& line : traces.Lines())
        got.push_back(line.source + " " + line.text);
    EXPECT_EQ(got, expected);
}

}  // namespace
