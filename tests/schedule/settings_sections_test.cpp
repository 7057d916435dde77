// Settings sections: writers with distinct values, positional readers and round
// trips; and the trace lines of the schedule and version-log codecs' steps.
#include <gtest/gtest.h>

#include "CUpDownSchedule.h"
#include "CVersionUpLog.h"
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
    std::string both;
    codec.toString(setting, schedule, both);
    EXPECT_EQ(both,
              "class;DownloadSchedule;;bool;IsAutoSetting;true;int;RepeatType;3;string;DayOfWeek;"
              "Mon;string;Date;1;string;Time;03:00;class;DownloadSetting;;int;DownloadType;-1;"
              "string;WebSiteUrl;w;string;ProxyAddress;a;string;ProxyPort;80;string;ProxyUser;u;"
              "string;ProxyPassword;p%!@q;string;CacheServerPath;c;string;CacheServerUser;v;"
              "string;CacheServerPassword;c%!@%!@;string;TempDriveLetter;T;"
              "string;ExternalMediaPath;/m;");
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

// Every call's trace lines, in order: a step enters and leaves under its
// codec's name; one written with its "[ENTER] " or "[LEAVE] " is that line
// alone (a step that gives up early never leaves), and one that starts "som "
// is a message line as it is.
TEST(CodecTracesTest, EveryStepEntersAndLeavesUnderItsCodecsName) {
    qel_test::TraceRecorder traces;
    {
        CUpDownSchedule named("caller");
        CVersionUpLog lists("caller");
        std::string out;
        TextBuffer empty(""), noKey("class[];UpdateModuleRegistInfo;;"),
            regist("string;AppKey;K;class[];UpdateModuleRegistInfo;;"),
            unsupported("class;S;;string[];ExtendedInfo;a!#b;"),
            unknown("class[];ShareInfo;;class[];OtherInfo;;"), depot("class[];ShareInfo;;");
        IWbemClassObject obj;
        auto read = [](auto& codec, char* text, auto... records) {
            codec.toObject(text, records...);
        };
        named.toString(CVelmora_PriorityUpdateParam(), out);
        named.toString(CVELMORA_UpdateSchedule(), out);
        named.toString(CVELMORA_DownloadSetting(), out);
        named.toString(CVELMORA_DownloadSetting(), CVELMORA_DownloadSchedule(), out);
        read(named, empty.get(), CVelmora_PriorityUpdateParam());
        read(named, empty.get(), CVELMORA_UpdateSchedule());
        read(named, empty.get(), CVELMORA_DownloadSchedule(), CVELMORA_DownloadSetting());
        named.String2RegisterUpdateModule(noKey.get(), obj);
        named.String2RegisterUpdateModule(regist.get(), obj);
        named.String2IWbem(unsupported.get(), obj);
        named.String2IWbem(nullptr, obj);
        named.SetUpdateDepoInfo(depot.get(), &obj);
        named.SetUpdateDepoInfo(unknown.get(), &obj);  // drops the depot: never leaves
        read(lists, empty.get(), std::vector<CVELMORA_QelVersionInfo>());
        read(lists, empty.get(), std::vector<CVELMORA_UpdatePlans>());
        read(lists, nullptr, std::vector<CVELMORA_VersionUpdateLog>());  // traced all the same
    }
    const std::string to = "void CUpDownSchedule::to", setting = "const CVELMORA_DownloadSetting&",
                      wbem = "(char*, IWbemClassObject&)", set = "char* CUpDownSchedule::SetUpdate",
                      sections = "virtual void CUpDownSchedule::String2IWbem" + wbem,
                      objects =
                          "std::vector<IWbemClassObject*, std::allocator<IWbemClassObject*> >",
                      list = "void CVersionUpLog::toObject(char*, std::vector<CVELMORA_";
    std::vector<std::string> expected, got;
    for (std::string step :
         {std::string("CUpDownSchedule::CUpDownSchedule(std::string)"),
          to + "String(const CVelmora_PriorityUpdateParam&, std::string&)",
          to + "String(const CVELMORA_UpdateSchedule&, std::string&)",
          to + "String(" + setting + ", std::string&)",
          to + "String(" + setting + ", const CVELMORA_DownloadSchedule&, std::string&)",
          to + "Object(char*, CVelmora_PriorityUpdateParam&)",
          to + "Object(char*, CVELMORA_UpdateSchedule&)",
          to + "Object(char*, CVELMORA_DownloadSchedule&, CVELMORA_DownloadSetting&)",
          "[ENTER] void CUpDownSchedule::String2RegisterUpdateModule" + wbem,
          "void CUpDownSchedule::String2RegisterUpdateModule" + wbem,
          "[ENTER] " + sections,
          "som " + sections + " unsupported type : ExtendedInfo",
          "[LEAVE] " + sections,
          "[ENTER] " + sections,
          "som " + sections + " parameter is NULL",
          "[ENTER] " + set + "DepoInfo(char*, IWbemClassObject*)",
          set + "ShareInfo(char*, " + objects + "*)",
          "[LEAVE] " + set + "DepoInfo(char*, IWbemClassObject*)",
          "[ENTER] " + set + "DepoInfo(char*, IWbemClassObject*)",
          set + "ShareInfo(char*, " + objects + "*)",
          list + "QelVersionInfo, std::allocator<CVELMORA_QelVersionInfo> >&)",
          list + "UpdatePlans, std::allocator<CVELMORA_UpdatePlans> >&)",
          list + "VersionUpdateLog, std::allocator<CVELMORA_VersionUpdateLog> >&)",
          std::string("virtual CUpDownSchedule::~CUpDownSchedule()")}) {
        if (step[0] == '[' || step.compare(0, 4, "som ") == 0)
            expected.push_back(step[0] == '[' ? "caller " + step : step);
        else
            for (const char* edge : {"caller [ENTER] ", "caller [LEAVE] "})
                expected.push_back(edge + step);
    }
    for (const qel_test::TraceLine& line : traces.Lines())
        got.push_back(line.source + " " + line.text);
    EXPECT_EQ(got, expected);
}

}  // namespace
