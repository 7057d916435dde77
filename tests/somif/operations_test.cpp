// CSomIf end to end through the scripted service on a real socket: header,
// exchange and result reading; the exact request bytes and trace lines of
// every operation, the decoding of replies, outputs left alone on failure,
// provider queries with device naming, and what the WBEM relay keeps of a reply.
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <tuple>

#include "CSomIf.h"
#include "provider_info/plain_text.h"
#include "support/fake_som_service.h"
#include "support/sample_providers.h"
#include "support/trace_recorder.h"
#include "common/object_json.h"

namespace {

using qel_test::Action;
using qel_test::FakeSomService;
using qel_test::TraceRecorder;
typedef std::vector<IWbemClassObject*> Objects;

const int kSendFailed = static_cast<int>(0x80081001u);
const int kReceiveFailed = static_cast<int>(0x80081101u);

TEST(MessageHeaderTest, HeadersNamesHandBuiltItemsAndTheObjectsOwnTraces) {
    TraceRecorder traces;
    {
        CSomIf som("front");
        EXPECT_EQ(som.getMsgHead("C", "HRESULT CSomIf::ExecuteReboot()", 4294967295u),
                  "00000047cafefeedC/ExecuteReboot000000004294967295");
    }
    const std::string head = "std::string CSomIf::getMsgHead(std::string, const char*, uint32_t)";
    EXPECT_EQ(traces.Texts(),
              (std::vector<std::string>{"[ENTER] CSomIf::CSomIf(std::string)",
                                        "[LEAVE] CSomIf::CSomIf(std::string)", "[ENTER] " + head,
                                        "[LEAVE] " + head, "[ENTER] virtual CSomIf::~CSomIf()",
                                        "[LEAVE] virtual CSomIf::~CSomIf()"}));
    for (const auto& line : traces.Lines())
        EXPECT_EQ(line.source + std::to_string(line.level), "front4");
    CSomIf som("front");
    CMofContents mof;
    mof.ClassName = "VELMORA_NicProvider";
    EXPECT_EQ(som.getMsgHead(mof, "M", 0), som.getMsgHead("VELMORA_NicProvider", "M", 0));
    EXPECT_EQ(som.getShortFuncName("Plain("), "Plain");  // no "::" before the "("
    EXPECT_EQ(som.getBoolParam("Rollback", false), "bool;Rollback;0;");
}

// A reply to class "C", method "M" (header length 35) with any result field.
std::string Reply(const std::string& field, const std::string& body) {
    char length[16];
    std::snprintf(length, sizeof length, "%08zu", body.size());
    return "00000035cafefeedC/M" + field + length + body;
}

TEST(ResultTest, ResultFieldReturnValueBodyPositionAndRebootKind) {
    const struct {
        std::string reply;
        int headerLength;
        HRESULT expected;
        bool searched;  // ReturnValue looked for (and traced)
    } cases[] = {
        {Reply("80081001", "long;ReturnValue;5;"), 35, 0x80081001L, false},
        {Reply("00000000", "string;A;x;long;ReturnValue;-2;"), 35, -2, true},
        {Reply("00000000", "string;A;x;"), 35, 0, true},
        {Reply("zzzzzzzz", "long;ReturnValue;7;"), 35, 7, true},
        {Reply("0000001g", ""), 35, 1, false},
        {Reply("00000000", "long;ReturnValue; +12ab;"), 35, 12, true},
        {Reply("00000000", "long;ReturnValue;9"), 35, 9, true},  // no closing ";"
        {Reply("00000000", "int;ReturnValue;9;"), 35, 0, true},  // not a long item
        {"", 35, 0, true},                                       // shorter than a header
        {"00000035cafefeedC/M00", 35, 0, true},                  // cut in the result field
        {Reply("00000000", "long;ReturnValue;3;"), 2, 3, true},  // nonsense header length
        {"00000099cafefeedC/M0000000000000000long;ReturnValue;3;", 35, 0, true},
    };
    CSomIf som("res");
    const std::string result = "HRESULT CSomIf::getResult(int, const char*)";
    const std::string value = "HRESULT CSomIf::GetReturnValue(std::string)";
    for (const auto& c : cases) {
        TraceRecorder traces;
        EXPECT_EQ(som.getResult(c.headerLength, c.reply.c_str()), c.expected) << c.reply;
        std::vector<std::string> expected = {"[ENTER] " + result};
        if (c.searched) {
            expected.push_back("[ENTER] " + value);
            expected.push_back("[LEAVE] " + value + ", rc=" + std::to_string(c.expected));
        }
        expected.push_back("[LEAVE] " + result + ", rc=" + std::to_string(int(c.expected)));
        EXPECT_EQ(traces.Texts(), expected) << c.reply;
    }
    EXPECT_EQ(som.getResult(35, nullptr), 0);
    // The item text inside the header's class name is not the body.
    EXPECT_EQ(som.GetReturnValue(FakeSomService::ReplyText("long;ReturnValue;4;", "M", 0, "")), 0);
    EXPECT_EQ(som.GetReturnValue("xxxxxxxxlong;ReturnValue;6;"), 6);  // no digits: offset 0
    const std::pair<std::string, unsigned> positions[] = {
        {Reply("00000000", "string;A;x;"), 35},
        {"no slash here", 0},
        {"abc/def", 7},   // no digit after "/": the body is empty
        {"abc/x1yz", 8},  // clamped to the end
        {"", 0}};
    for (const auto& c : positions)
        EXPECT_EQ(som.getSpecificPos(c.first), c.second) << c.first;
    const std::pair<const char*, long> reboots[] = {
        {"long;Reboot;2;", 0},  // never at the very first character
        {"string;A;b;long;Reboot;1;", 1},
        {"xlong;Rebooted;3;", 0},
        {"", 0},
        {nullptr, 0}};
    for (const auto& c : reboots)
        EXPECT_EQ(som.getRebootKind(c.first), c.second) << (c.first ? c.first : "null");
}

class ExchangeTest : public ::testing::Test {
  protected:
    qel_test::TempSysroot root;
};

TEST_F(ExchangeTest, HeadersBeyondTheBufferAreNeverSentRepliesBeyondTheLimitAreCut) {
    FakeSomService service(root);
    TraceRecorder traces;
    CSomIf som("ex");
    // 33 fixed bytes + class + method: 1023 still fits the 1024-byte buffer with its NUL.
    const std::string fits(989, 'c');
    EXPECT_EQ(som.TransMessage("M", fits, nullptr), 0);
    EXPECT_EQ(service.LastRequest().bytes, "00001023cafefeed" + fits + "/M0000000000000000");
    std::string body = "stale";
    char buffer[8] = "stale";
    EXPECT_EQ(som.TransMessage("M", fits + "c", body), kSendFailed);
    EXPECT_EQ(som.TransMessage("M", fits + "c", body, buffer, sizeof buffer), kSendFailed);
    EXPECT_EQ(body + buffer, "");
    EXPECT_EQ(som.getMsgHead(std::string(5000, 'c'), "M", 0).size(), 1023u);  // cut, not overrun
    EXPECT_EQ(service.LastRequest().bytes.size(), 1023u);                     // nothing sent since
    std::vector<std::string> errors;
    for (const auto& line : traces.Lines())
        errors.insert(errors.end(), line.level == 2 ? 1 : 0, line.text);
    const std::string head = "std::string CSomIf::getMsgHead(std::string, const char*, uint32_t)",
                      tail = " bytes does not fit the 1024-byte buffer: not sent";
    const std::string once = head + " a header of 1024" + tail;
    EXPECT_EQ(errors, (std::vector<std::string>{once, once, head + " a header of 5034" + tail}));
    service.Push(Action::Answer(std::string(5 * 1024 * 1024, 'x')));  // replies: cut at 4 MiB
    EXPECT_EQ(som.TransMessage("M", "C", body), 0);
    EXPECT_EQ(body.size(), 0x400000u - 1);
    EXPECT_EQ(som.TransMessage("M", "C", body, buffer, 0), kReceiveFailed);  // no room at all
}

TEST_F(ExchangeTest, FailedExchangesGiveTheirCodesLeaveNoTextAndLeakNothing) {
    const struct {
        Action action;
        const char* text;  // the reply text left in the caller's buffer
    } cases[] = {
        {Action::Answer("long;ReturnValue;3;"),
         "00000035cafefeedC/M0000000000000019long;ReturnValue;3;"},
        {Action::Raw(""), ""},  // closes without answering
        {Action::Fault(Action::kNeverAnswer), ""},
    };
    const int descriptors = qel_test::OpenDescriptorCount();  // no listener open yet
    CSomIf som("ex");
    for (int round = 0; round < 2; ++round) {
        FakeSomService service(root, /*timeoutSeconds=*/1);
        for (const auto& c : cases) {
            for (bool callerBuffer : {false, true}) {
                service.Push(c.action);
                std::string body = "stale text";
                char buffer[64] = "stale";
                const auto start = std::chrono::steady_clock::now();
                const int rc = callerBuffer
                                   ? som.TransMessage("M", "C", body, buffer, sizeof buffer)
                                   : som.TransMessage("M", "C", body);
                EXPECT_EQ(rc, c.text[0] != '\0' ? 3 : kReceiveFailed);
                EXPECT_EQ(callerBuffer ? std::string(buffer) : body, c.text);
                EXPECT_LT(std::chrono::steady_clock::now() - start,
                          std::chrono::milliseconds(2500));
            }
        }
        service.Stop();
        char buffer[8] = "stale";
        std::string body = "stale";
        EXPECT_EQ(som.TransMessage("M", "C", body), kSendFailed);
        EXPECT_EQ(som.TransMessage("M", "C", body, buffer, sizeof buffer), kSendFailed);
        EXPECT_EQ(som.TransMessage("M", "C", body, nullptr, 64), kSendFailed);
        EXPECT_EQ(body + buffer, "");
    }
    EXPECT_EQ(qel_test::OpenDescriptorCount(), descriptors);
}

const uint32_t kServiceError = 0x80001234u;  // negative, not of the transport family
const HRESULT kError = kServiceError;

const std::string kLines =  // the log readers' output, as traces name it
    "std::vector<std::basic_string<char, std::char_traits<char>, std::allocator<char> >, "
    "std::allocator<std::basic_string<char, std::char_traits<char>, std::allocator<char> > > >&";

class OperationsTest : public ::testing::Test {
  protected:
    qel_test::TempSysroot root;
    FakeSomService service{root, 1};
    CSomIf som{"ops"};
};

std::string DeviceReply() {
    std::string text;
    qel::pm::WritePlainText(qel_test::SampleDevProvider(), text);
    return text;
}

// A request as the service sees it (the fake writes the header by hand).
std::string Request(const std::string& className, const std::string& method,
                    const std::string& body = "") {
    return FakeSomService::ReplyText(className, method, 0, body);
}

// A flat object's entries in order, "name=value;" each.
std::string Entries(const IWbemClassObject& obj) {
    std::string text;
    for (const auto& entry : obj) {
        nlohmann::ordered_json value;
        qel::Scalar<long, std::string>(entry.second, value);
        text += entry.first + "=" + value.dump() + ";";
    }
    return text;
}

// How an exit line prints the code: as an int, as an int widened to 64
// unsigned bits, or the 64-bit value (the log readers' 32 one-bits are -1 there).
enum Print { kInt, kWide, kLong };

std::string Printed(Print print, HRESULT rc) {
    if (print == kLong)
        return std::to_string(static_cast<unsigned long>(rc == 0xFFFFFFFFL ? -1L : rc));
    const int narrow = static_cast<int>(rc);
    return print == kInt ? std::to_string(narrow)
                         : std::to_string(static_cast<unsigned long>(static_cast<long>(narrow)));
}

struct Operation {
    std::string signature;  // as the entry and exit lines name it
    Print print;
    std::string request;
    std::function<HRESULT()> call;
    std::string detail = "";        // what the entry line adds
    HRESULT result = kError;        // what the call returns for the service's kServiceError
    HRESULT stopped = 0x80081001L;  // and with the service absent
};

TEST_F(OperationsTest, EveryOperationSendsItsExactRequestAndTracesItsResult) {
    const std::string relayArgs = "(std::string, IWbemClassObject*, IWbemClassObject**)";
    const std::string um = "VELMORA_UpdateManager", wd = "VELMORA_ToolServiceWD",
                      logs = "VELMORA_LogManager";
    const CVELMORA_UpdateSchedule update{true, 1, "a", "", "c"};
    CVELMORA_UpdateSchedule read;
    CVELMORA_DownloadSetting setting;
    CVELMORA_DownloadSchedule schedule;
    LONG kind = 0;
    std::vector<CVELMORA_UpdatePlans> plans;
    std::vector<CVELMORA_QelVersionInfo> versions;
    std::vector<CVELMORA_VersionUpdateLog> updateLogs;
    std::vector<std::string> text;
    std::string value;
    unsigned type = 0;
    CVelmora_DevProviderManageInfo devices;
    CVelmora_ToolProviderManageInfo tools;
    IWbemClassObject in, out, *outPtr = &out;  // the output of ExecMethod and TransUmMessage
    in.push("AppKey", std::string("k;1"));
    char cls[] = "C", method[] = "M";
    const std::string inText = "string;AppKey;k%!@1;";
    const std::string download =
        "class;DownloadSetting;;int;DownloadType;0;string;WebSiteUrl;;string;ProxyAddress;;string;"
        "ProxyPort;;string;ProxyUser;;string;ProxyPassword;;string;CacheServerPath;;string;"
        "CacheServerUser;;string;CacheServerPassword;;string;TempDriveLetter;;string;"
        "ExternalMediaPath;;";
    typedef HRESULT (CSomIf::*Wbem)(std::string, IWbemClassObject*, IWbemClassObject**);
    // A query leaves a null output alone when negative; a relayed method
    // keeps of the reply only the result, as ReturnValue.
    long relayed = 0;
    auto wbem = [&](Wbem call, bool relay) {
        return [&, call, relay] {
            IWbemClassObject mine;
            mine.push("ReturnValue", 1L);
            IWbemClassObject* out = relay ? &mine : nullptr;
            HRESULT rc = (som.*call)("C", &in, &out);
            EXPECT_EQ(out, relay ? &mine : nullptr);
            EXPECT_EQ(Entries(mine), "ReturnValue=" + std::to_string(relay ? relayed : 1) + ";");
            return rc;
        };
    };
    std::vector<Operation> operations = {
        {"SetUpdatePriority(std::string, const CVelmora_PriorityUpdateParam&)", kWide,
         Request("VELMORA_Nic", "SetUpdatePriority",
                 "class;Velmora_PriorityUpdateParam;;string;AppKey;;uint;UpdatePriority;0;string;"
                 "VendorName;;string;DeviceID;;string;ModuleKind;;"),
         [&] { return som.SetUpdatePriority("VELMORA_Nic", CVelmora_PriorityUpdateParam()); }},
        {"SetAutoDownloadSetting(const CVELMORA_DownloadSetting&, const "
         "CVELMORA_DownloadSchedule&)",
         kWide,
         Request(um, "SetAutoDownloadSetting",
                 "class;DownloadSchedule;;bool;IsAutoSetting;false;int;RepeatType;0;string;"
                 "DayOfWeek;;string;Date;;string;Time;;" +
                     download),
         [&] { return som.SetAutoDownloadSetting(setting, schedule); }},
        {"SetAutoUpdateSetting(const CVELMORA_UpdateSchedule&)", kWide,
         "00000074cafefeedVELMORA_UpdateManager/"
         "SetAutoUpdateSetting0000000000000109class;UpdateSchedule;;bool;IsAutoSetting;true;int;"
         "RepeatType;1;string;DayOfWeek;a;string;Date;;string;Time;c;",
         [&] { return som.SetAutoUpdateSetting(update); }},
        {"DownloadAll(const CVELMORA_DownloadSetting&)", kWide,
         Request(um, "DownloadAll", download), [&] { return som.DownloadAll(setting); }},
        {"GetAutoDownloadSetting(CVELMORA_DownloadSetting&, CVELMORA_DownloadSchedule&)", kInt,
         Request(um, "GetAutoDownloadSetting"),
         [&] { return som.GetAutoDownloadSetting(setting, schedule); }},
        {"GetAutoUpdateSetting(CVELMORA_UpdateSchedule&)", kWide,
         Request(um, "GetAutoUpdateSetting"), [&] { return som.GetAutoUpdateSetting(read); }},
        {"GetUpdatePlans(std::string, std::vector<CVELMORA_UpdatePlans, "
         "std::allocator<CVELMORA_UpdatePlans> >&)",
         kInt, Request("C", "GetUpdatePlans"), [&] { return som.GetUpdatePlans("C", plans); }},
        {"GetUpdatePlans(std::string, bool, std::vector<CVELMORA_UpdatePlans, "
         "std::allocator<CVELMORA_UpdatePlans> >&)",
         kInt,
         "00000068cafefeedVELMORA_UpdateManager/GetUpdatePlans0000000000000016bool;Rollback;1;",
         [&] { return som.GetUpdatePlans(um, true, plans); }},
        {"ReleaseOperatingAuthority(std::string, std::string)", kInt,
         Request("C", "ReleaseOperatingAuthority", "string;AppKey;key-1;"),
         [&] { return som.ReleaseOperatingAuthority("C", "key-1"); }},
        {"GetOperatingAuthority(std::string, std::string)", kInt,
         "00000067cafefeedVELMORA_Other/GetOperatingAuthority0000000000000020string;AppKey;key-1;",
         [&] { return som.GetOperatingAuthority("VELMORA_Other", "key-1"); }},
        {"ExecuteReboot()", kWide,
         "00000067cafefeedVELMORA_UpdateManager/ExecuteReboot0000000000000000",
         [&] { return som.ExecuteReboot(); }},
        {"RollbackAll(LONG&)", kInt, Request(um, "RollbackAll"),
         [&] { return som.RollbackAll(kind); }},
        {"UpdateAll(LONG&)", kInt, Request(um, "UpdateAll"), [&] { return som.UpdateAll(kind); }},
        {"CollectQelVersion(std::vector<CVELMORA_QelVersionInfo, "
         "std::allocator<CVELMORA_QelVersionInfo> >&)",
         kInt, Request("VELMORA_QelVersion", "CollectQelVersion"),
         [&] { return som.CollectQelVersion(versions); }},
        {"CollectVersionUpLog(std::vector<CVELMORA_VersionUpdateLog, "
         "std::allocator<CVELMORA_VersionUpdateLog> >&)",
         kInt, Request(logs, "CollectVersionUpLog"),
         [&] { return som.CollectVersionUpLog(updateLogs); }},
        {"CollectDownloadLog(std::string, " + kLines + ")", kLong,
         "00000069cafefeedVELMORA_LogManager/CollectDownloadLog0000000000000018string;AppKey;app;",
         [&] { return som.CollectDownloadLog("app", text); }, " app", kError, 0xFFFFFFFFL},
        {"CollectResultLog(std::string, " + kLines + ")", kLong,
         Request(logs, "CollectResultLog", "string;AppKey;app;"),
         [&] { return som.CollectResultLog("app", text); }, "", kError, 0xFFFFFFFFL},
        {"getManagerLog(const char*, const char*, " + kLines + ")", kLong,
         Request(logs, "CollectResultLog"),
         [&] { return som.getManagerLog("CollectResultLog", nullptr, text); }, "", kError, -1},
        {"AliveMonitorUpdateParameters()", kWide,
         "00000081cafefeedVELMORA_ToolServiceWD/AliveMonitorUpdateParameter0000000000000000",
         [&] { return som.AliveMonitorUpdateParameters(); }},
        {"AliveMonitorClearParameters()", kWide, Request(wd, "AliveMonitorClearParameter"),
         [&] { return som.AliveMonitorClearParameters(); }},
        {"AliveMonitorSetParameter(std::string, std::string)", kWide,
         "00000078cafefeedVELMORA_ToolServiceWD/"
         "AliveMonitorSetParameter0000000000000037string;Name;Interval;string;Value;30;",
         [&] { return som.AliveMonitorSetParameter("Interval", "30"); }},
        {"AliveMonitorGetParameter(std::string, std::string&, uint&)", kInt,
         Request(wd, "AliveMonitorGetParameter", "string;Name;a;b;"),
         [&] { return som.AliveMonitorGetParameter("a;b", value, type); }},
        {"GetProviderManageInfo(std::string, CVelmora_DevProviderManageInfo&)", kInt,
         Request("C", "GetProviderManageInfo"),
         [&] { return som.GetProviderManageInfo("C", devices); }, " C", 0x80081101L},
        {"GetProviderManageInfo(std::string, CVelmora_ToolProviderManageInfo&)", kInt,
         Request("C", "GetProviderManageInfo"),
         [&] { return som.GetProviderManageInfo("C", tools); }, " C", 0x80081101L},
        {"CheckUpdateModuleConformity" + relayArgs, kInt,
         Request("C", "CheckUpdateModuleConformity", inText),
         wbem(&CSomIf::CheckUpdateModuleConformity, false), " C"},
        {"GetProviderManageInfo" + relayArgs, kInt, Request("C", "GetProviderManageInfo"),
         wbem(&CSomIf::GetProviderManageInfo, false), " C"},
        {"GetUpdatePlans" + relayArgs, kInt, Request("C", "GetUpdatePlans", inText),
         wbem(&CSomIf::GetUpdatePlans, false), " C"},
        {"ExecMethod(OLECHAR*, OLECHAR*, long int, IWbemContext*, IWbemClassObject*, "
         "IWbemClassObject**, IWbemCallResult**)",
         kInt, Request("C", "M", inText),
         [&] { return som.ExecMethod(cls, method, 0, nullptr, &in, &outPtr, nullptr); }, "", 0},
        {"int CSomIf::TransUmMessage(std::string, std::string, IWbemClassObject*, "
         "IWbemClassObject**)",
         kInt, Request("C", "M"), [&] { return som.TransUmMessage("C", "M", nullptr, &outPtr); },
         " C M"},
    };
    // The relayed methods; GetOperationAuthority asks for GetOperatingAuthority,
    // and ExecuteUpdate's entry line alone does not name the class.
    const std::pair<std::string, Wbem> relays[] = {
        {"Reboot", &CSomIf::Reboot},
        {"ExecuteUpdateApplyCheck", &CSomIf::ExecuteUpdateApplyCheck},
        {"RegisterUpdateModule", &CSomIf::RegisterUpdateModule},
        {"SetDependencyInfo", &CSomIf::SetDependencyInfo},
        {"ReleaseOperatingAuthority", &CSomIf::ReleaseOperatingAuthority},
        {"GetOperationAuthority", &CSomIf::GetOperationAuthority},
        {"ExecuteUpdateRestore", &CSomIf::ExecuteUpdateRestore},
        {"ExecutePreUpdate", &CSomIf::ExecutePreUpdate},
        {"ExecuteUpdateBackup", &CSomIf::ExecuteUpdateBackup},
        {"ExecuteUpdate", &CSomIf::ExecuteUpdate}};
    for (const auto& r : relays) {
        const std::string wire =
            r.first == "GetOperationAuthority" ? "GetOperatingAuthority" : r.first;
        operations.push_back({r.first + relayArgs, kInt, Request("C", wire, inText),
                              wbem(r.second, true), r.first == "ExecuteUpdate" ? "" : " C"});
    }
    // Answered with kServiceError; then failed: closed unanswered, and the service gone.
    for (int pass = 0; pass < 3; ++pass) {
        if (pass == 2)
            service.Stop();
        relayed = pass == 0 ? static_cast<int>(kServiceError) : 1;  // 1: left alone
        for (const Operation& op : operations) {
            service.Push(pass == 0
                             ? Action::Answer("long;ReturnValue;4;string;Extra;x;", kServiceError)
                             : Action::Raw(""));
            qel_test::TraceRecorder traces;
            const bool isInt = op.signature[0] == 'i';
            const std::string sig = (isInt ? "" : "HRESULT CSomIf::") + op.signature;
            const HRESULT rc = pass == 0 ? op.result : pass == 1 ? 0x80081101L : op.stopped;
            EXPECT_EQ(op.call(), isInt ? static_cast<int>(rc) : rc) << sig;
            EXPECT_EQ(pass < 2 ? service.LastRequest().bytes : op.request, op.request) << sig;
            ASSERT_FALSE(traces.Texts().empty());
            EXPECT_EQ(traces.Texts().front(), "[ENTER] " + sig + op.detail);
            EXPECT_TRUE(traces.Contains("[LEAVE] " + sig + ", rc=" + Printed(op.print, rc))) << sig;
        }
    }
}

TEST_F(OperationsTest, ReadersDecodeOnlyWhenNotNegative) {
    const std::string download =
        "class;DownloadSchedule;;bool;IsAutoSetting;true;int;RepeatType;2;string;DayOfWeek;Sun;"
        "string;Date;;string;Time;04:00;class;DownloadSetting;;int;DownloadType;1;";
    const std::string plan = "string;ProviderName;nic;string;VendorName;V;";
    for (uint32_t result : {0u, 3u, kServiceError}) {
        const bool decoded = result != kServiceError;
        std::vector<std::string> lines(result == 0 ? 0 : 1, "old");  // log lines: zero result only
        service.Push(Action::Answer("string[];Lines;first!#second;string[];More;third;", result));
        EXPECT_EQ(som.CollectDownloadLog("app", lines), result == 0 ? 0 : HRESULT(result));
        EXPECT_EQ(lines.size(), result == 0 ? 3u : 1u);
        EXPECT_EQ(lines.front() + lines.back(), result == 0 ? "firstthird" : "oldold");
        auto answer = [&](const std::string& body) {  // the next reply's body
            service.Push(Action::Answer(body, result));
            return &som;
        };
        CVELMORA_DownloadSetting setting;
        CVELMORA_DownloadSchedule schedule;
        answer(download)->GetAutoDownloadSetting(setting, schedule);
        EXPECT_EQ(schedule.Time == "04:00" && setting.DownloadType == 1, decoded);
        std::vector<CVELMORA_UpdatePlans> plans;
        answer("class[];UpdatePlansList;;" + plan + plan)->GetUpdatePlans("C", plans);
        std::vector<CVELMORA_QelVersionInfo> versions;
        answer("string;GroupName;core;string;FileName;f;")->CollectQelVersion(versions);
        std::vector<CVELMORA_VersionUpdateLog> logs;
        answer("string;ProviderName;nic;string;DateTime;d;")->CollectVersionUpLog(logs);
        EXPECT_EQ(std::to_string(plans.size()) + std::to_string(versions.size()) +
                      std::to_string(logs.size()),
                  decoded ? "211" : "000");
        LONG kind = 42, after = 42;
        answer("long;Reboot;1;")->UpdateAll(kind);
        answer("string;Other;x;")->RollbackAll(after);  // no "Reboot" item
        EXPECT_EQ(std::to_string(kind) + std::to_string(after), decoded ? "10" : "4242");
        std::string value = "old";  // Type read after Value
        unsigned type = 9;
        answer("string;Value;abc;int;Type;2;")->AliveMonitorGetParameter("Interval", value, type);
        EXPECT_EQ(value + std::to_string(type), decoded ? "abc2" : "old9");
    }
    // A reply of plans beyond the 8 KiB buffer is cut; the records that fit are read.
    std::string many = "class[];UpdatePlansList;;";
    while (many.size() < 9000)
        many += plan;
    service.Push(Action::Answer(many));
    std::vector<CVELMORA_UpdatePlans> cut;
    EXPECT_EQ(som.GetUpdatePlans("C", cut), 0);
    EXPECT_EQ(cut.size(), 184u);
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

TEST_F(OperationsTest, ExecMethodKeepsTheReplyAndFailsWithoutLosingOwnership) {
    char cls[] = "C", method[] = "M";
    const struct {
        Action action;
        HRESULT rc;
        const char* entries;  // the output object's, in order
    } cases[] = {
        // The result as ReturnValue, the body's items (its own ReturnValue too) on top.
        {Action::Answer("long;ReturnValue;3;string;Message;done;"), 0,
         R"(ReturnValue=3;ReturnValue=3;Message="done";)"},
        {Action::Answer("long;ReturnValue;9;", 0x80040001u), 0,
         "ReturnValue=-2147221503;ReturnValue=9;"},
        // The transport family is returned, with no ReturnValue.
        {Action::Answer("string;A;x;", 0x80080005u), 0x80080005L, R"(A="x";)"},
        {Action::Raw(""), 0x80081101L, ""},
    };
    for (const auto& c : cases) {
        service.Push(c.action);
        IWbemClassObject* out = nullptr;
        EXPECT_EQ(som.ExecMethod(cls, method, 0, nullptr, nullptr, &out, nullptr), c.rc);
        std::unique_ptr<IWbemClassObject> owned(out);  // created before the exchange
        EXPECT_EQ(Entries(*out), c.entries);
    }
    qel_test::TraceRecorder traces;
    IWbemClassObject* out = nullptr;
    EXPECT_EQ(som.ExecMethod(nullptr, method, 0, nullptr, nullptr, &out, nullptr), -1);
    EXPECT_EQ(som.ExecMethod(cls, nullptr, 0, nullptr, nullptr, &out, nullptr), -1);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(traces.Texts().size(), 2u);  // entry lines only
    service.Stop();
    EXPECT_EQ(som.ExecuteUpdateBackup("C", nullptr, &out), 0x80081001L);
    std::unique_ptr<IWbemClassObject> owned(out);
    EXPECT_EQ(Entries(*out), "");  // created, and no ReturnValue for the transport family
}

TEST_F(OperationsTest, ProviderQueriesNameTheDevicesAndReadRepliesWhateverTheirResult) {
    root.WriteFile("/usr/share/hwdata/pci.ids", "8086  Intel Corporation\n\t10fb  82599ES\n");
    const struct {
        Action action;
        HRESULT rc;
        std::size_t devices;
    } cases[] = {
        {Action::Raw(""), 0x80081101L, 0},  // nothing read: the name kept
        {Action::Answer(DeviceReply(), kServiceError), 0x80081101L, 3},  // negative: read
        {Action::Answer(DeviceReply(), 4), 4, 3},
        {Action::Answer(DeviceReply()), 0, 3},
    };
    TraceRecorder traces;
    CVelmora_DevProviderManageInfo info;
    for (const auto& c : cases) {
        info.DeviceInfo.resize(5);  // from an earlier query: replaced
        info.ProviderName = "kept";
        service.Push(c.action);
        EXPECT_EQ(som.GetProviderManageInfo("VELMORA_NicProvider", info), c.rc);
        EXPECT_EQ(info.DeviceInfo.size(), c.devices);
        EXPECT_EQ(info.ProviderName == "kept", c.devices == 0);
    }
    EXPECT_EQ(info.DeviceInfo[0].DeviceVendorName + " | " + info.DeviceInfo[0].DeviceName,
              "Intel Corporation | 82599ES");
    EXPECT_EQ(info.DeviceInfo[1].DeviceVendorName + info.DeviceInfo[1].DeviceName, "");
    // The receive of a request the caller sent.
    std::string tools;
    qel::pm::WritePlainText(qel_test::SampleToolProvider(), tools);
    service.Push(Action::Answer(tools));
    const std::string head = som.getMsgHead("C", "GetProviderManageInfo", 0);
    EXPECT_EQ(som.SendMessage(head), 55);
    CVelmora_ToolProviderManageInfo tool;
    EXPECT_EQ(som.RecvProviderManageInfo(head.size(), tool), 0);
    EXPECT_EQ(tool.ToolInfo.size(), 2u);
    EXPECT_EQ(som.RecvProviderManageInfo(60, tool), -1);  // nothing sent, nothing received
    EXPECT_EQ(traces.Texts().back(),
              "[LEAVE] int CSomIf::RecvProviderManageInfo(size_t, "
              "CVelmora_ToolProviderManageInfo&), rc=-1");
    EXPECT_EQ(traces.UnpairedSteps(), std::vector<std::string>());
}

TEST_F(OperationsTest, WbemQueriesDecodeWhenTheResultIsNotNegative) {
    service.Push(Action::Answer("class[];UpdatePlansList;;string;ProviderName;P;"));
    IWbemClassObject* out = nullptr;
    EXPECT_EQ(som.GetUpdatePlans("VELMORA_UpdateManager", nullptr, &out), 0);
    std::unique_ptr<IWbemClassObject> owned(out);
    EXPECT_EQ(qel::TreeText(*out), R"({"UpdatePlansList":[{"ProviderName":"P"}]})");
    service.Push(
        Action::Answer("string;UpdateModuleConformityList;;string;ProviderName;P;string;"
                       "VendorName;V;string;UpdateModuleKind;K;class;ModuleInfo;;",
                       3));
    IWbemClassObject mine, *minePtr = &mine;
    EXPECT_EQ(som.CheckUpdateModuleConformity("C", nullptr, &minePtr), 3);  // positive: decoded
    EXPECT_NE(mine.Get("UpdateModuleConformityList"), nullptr);
    service.Push(Action::Answer(DeviceReply()));
    IWbemClassObject* tree = nullptr;
    EXPECT_EQ(som.GetProviderManageInfo("VELMORA_NicProvider", nullptr, &tree), 0);
    owned.reset(tree);
    IWbemClassObject* provider = *tree->GetAs<IWbemClassObject*>("DevProviderManageInfo");
    EXPECT_EQ((*provider->GetAs<Objects*>("DeviceInfo"))->size(), 3u);
}

TEST_F(OperationsTest, ProcessStatusFile) {
    const std::string file = "/opt/velmora/qel/ProcessStatus.ini";
    const std::tuple<const char*, std::string, const char*> cases[] = {
        // file (null: none), status as traced, value shown
        {"[icon]\nstatus=download\ntype=rollback\n", "8003", "download"},
        {"[icon]\nstatus=update\ntype=update\n", "8001", "update"},
        {"[icon]\nstatus=updated-now\ntype=rollback\n", "8002", "rollback"},
        {"[icon]\nstatus=idle\n", "0", "idle"},
        {"not an ini file at all \x01\x02", "0", ""},
        {nullptr, "0", ""}};
    for (const auto& c : cases) {
        std::get<0>(c) ? root.WriteFile(file, std::get<0>(c)) : root.RemoveFile(file);
        qel_test::TraceRecorder traces;
        LONG status = 77;
        EXPECT_EQ(som.GetQELStatus(status), 0);
        EXPECT_EQ(status, std::stol(std::get<1>(c), nullptr, 16));
        const std::string line =
            "HRESULT CSomIf::GetQELStatus(LONG&) ### status=" + std::string(std::get<2>(c)) +
            ", result=0x" + std::get<1>(c);
        qel_test::TraceLine found{"", 0, ""};
        EXPECT_TRUE(traces.Find(line, &found) && found.level == 1) << line;
    }
}

}  // namespace
