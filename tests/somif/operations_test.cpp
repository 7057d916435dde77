// CSomIf end to end through the scripted service on a real socket: header,
// exchange and result reading; the exact request bytes and trace lines of
// every operation, the decoding of replies, outputs left alone on failure,
// provider queries with device naming, and what the WBEM relay keeps of a reply.
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <tuple>

#include "CSomIf.h"
#include "provider_info/plain_text.h"
#include "support/fake_som_service.h"
#include "support/sample_providers.h"
#include "support/trace_recorder.h"

namespace {

using qel_test::Action;
using qel_test::FakeSomService;
using qel_test::TraceRecorder;
typedef std::vector<IWbemClassObject*> Objects;

const int kSendFailed = static_cast<int>(0x80081001u);
const int kReceiveFailed = static_cast<int>(0x80081101u);

TEST(MessageHeaderTest, HeadersNamesAndHandBuiltItems) {
    TraceRecorder traces;
    {
        CSomIf som("front");
        EXPECT_EQ(som.getMsgHead("C", "HRESULT CSomIf::ExecuteReboot()", 4294967295u),
                  "00000047cafefeedC/ExecuteReboot000000004294967295");
        CMofContents mof;
        mof.ClassName = "VELMORA_NicProvider";
        EXPECT_EQ(som.getMsgHead(mof, "M", 0), som.getMsgHead("VELMORA_NicProvider", "M", 0));
        const std::pair<const char*, const char*> names[] = {
            {"ExecuteUpdate", "ExecuteUpdate"},
            {"HRESULT CSomIf::AliveMonitorSetParameter(std::string, std::string)",
             "AliveMonitorSetParameter"},
            {"", ""},
            {"Plain(", "Plain"}};
        for (const auto& c : names)
            EXPECT_EQ(som.getShortFuncName(c.first), c.second);
        EXPECT_EQ(som.getBoolParam("Rollback", false), "bool;Rollback;0;");
    }
    const std::string head = "std::string CSomIf::getMsgHead(std::string, const char*, uint32_t)";
    std::vector<std::string> texts = traces.Texts();
    ASSERT_EQ(texts.size(), 10u);
    texts.erase(texts.begin() + 4, texts.end() - 2);
    EXPECT_EQ(texts,
              (std::vector<std::string>{"[ENTER] CSomIf::CSomIf(std::string)",
                                        "[LEAVE] CSomIf::CSomIf(std::string)", "[ENTER] " + head,
                                        "[LEAVE] " + head, "[ENTER] virtual CSomIf::~CSomIf()",
                                        "[LEAVE] virtual CSomIf::~CSomIf()"}));
    for (const auto& line : traces.Lines())
        EXPECT_EQ(line.source + std::to_string(line.level), "front4");
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
    EXPECT_EQ(som.GetReturnValue("00000099short"), 0);
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
        {"xlong;Reboot;2;", 2},
        {"long;Reboot;2;", 0},  // never at the very first character
        {"string;A;b;long;Reboot;1;", 1},
        {"xlong;Reboot;;", 0},
        {"xlong;Reboot;7", 7},
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
    const auto start = std::chrono::steady_clock::now();
    for (const std::string& className : {fits + "c", std::string(5000, 'c')}) {
        std::string body = "stale";
        char buffer[8] = "stale";
        EXPECT_EQ(som.TransMessage("M", className, body), kSendFailed);
        EXPECT_EQ(som.TransMessage("M", className, body, buffer, sizeof buffer), kSendFailed);
        EXPECT_EQ(body + buffer, "");
        CVelmora_ToolProviderManageInfo tools;
        EXPECT_EQ(som.GetProviderManageInfo(className, tools), 0x80081001u);
        EXPECT_EQ(som.getMsgHead(className, "M", 0).size(), 1023u);  // cut, not overrun
    }
    EXPECT_LT(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(), 1);
    EXPECT_EQ(service.LastRequest().bytes.size(), 1023u);  // nothing sent since
    std::vector<std::string> errors;
    for (const auto& line : traces.Lines())
        errors.insert(errors.end(), line.level == 2 ? 1 : 0, line.text);
    ASSERT_EQ(errors.size(), 8u);
    EXPECT_EQ(errors[0],
              "std::string CSomIf::getMsgHead(std::string, const char*, uint32_t) a header of "
              "1024 bytes does not fit the 1024-byte buffer: not sent");
    EXPECT_NE(errors[4].find(" a header of 5034 bytes does not fit"), std::string::npos);
    service.Push(Action::Answer(std::string(5 * 1024 * 1024, 'x')));
    service.Push(Action::Answer("long;ReturnValue;2;"));
    std::string body;  // replies: cut at 4 MiB, the rest drained
    EXPECT_EQ(som.TransMessage("M", "C", body), 0);
    EXPECT_EQ(body.size(), 0x400000u - 1);
    EXPECT_EQ(som.TransMessage("M", "C", body), 2);
    EXPECT_EQ(body, FakeSomService::ReplyText("C", "M", 0, "long;ReturnValue;2;"));
    char small[8];
    EXPECT_EQ(som.TransMessage("M", "C", body, small, 0), kReceiveFailed);  // no room at all
}

TEST_F(ExchangeTest, FailedExchangesGiveTheirCodesLeaveNoTextAndLeakNothing) {
    const struct {
        Action action;
        const char* text;  // the reply text left in the caller's buffer
    } cases[] = {
        {Action::Answer("long;ReturnValue;3;"),
         "00000035cafefeedC/M0000000000000019long;ReturnValue;3;"},
        {Action::Raw(""), ""},                      // closes without answering
        {Action::Raw("00000035cafefeedC/M0"), ""},  // half a header
        {Action::Fault(Action::kNeverAnswer), ""},
        {Action::Fault(Action::kCloseBeforeRequest), ""},
    };
    const int descriptors = qel_test::OpenDescriptorCount();  // no listener open yet
    CSomIf som("ex");
    for (int round = 0; round < 2; ++round) {
        FakeSomService service(root, /*timeoutSeconds=*/1);
        for (const auto& c : cases) {
            const bool answered = c.text[0] != '\0';
            for (bool callerBuffer : {false, true}) {
                service.Push(c.action);
                std::string body = "stale text";
                char buffer[64] = "stale";
                const auto start = std::chrono::steady_clock::now();
                int rc = callerBuffer ? som.TransMessage("M", "C", body, buffer, sizeof buffer)
                                      : som.TransMessage("M", "C", body);
                // A service that closes before reading may also fail the send.
                if (rc == kSendFailed && c.action.kind == Action::kCloseBeforeRequest)
                    rc = kReceiveFailed;
                EXPECT_EQ(rc, answered ? 3 : kReceiveFailed);
                EXPECT_EQ(callerBuffer ? std::string(buffer) : body, c.text);
                EXPECT_LT(
                    std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(),
                    2.5);
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
    CVELMORA_UpdateSchedule update, read;
    update.IsAutoSetting = true;
    update.RepeatType = 1;
    update.DayOfWeek = "a";
    update.Time = "c";
    CVELMORA_DownloadSetting setting;
    CVELMORA_DownloadSchedule schedule;
    CVelmora_PriorityUpdateParam priority;
    LONG kind = 0;
    std::vector<CVELMORA_UpdatePlans> plans;
    std::vector<CVELMORA_QelVersionInfo> versions;
    std::vector<CVELMORA_VersionUpdateLog> updateLogs;
    std::vector<std::string> text;
    std::string value;
    unsigned type = 0;
    CVelmora_DevProviderManageInfo devices;
    CVelmora_ToolProviderManageInfo tools;
    IWbemClassObject in;
    in.push("AppKey", std::string("k;1"));
    const std::string inText = "string;AppKey;k%!@1;";
    const std::string download =
        "class;DownloadSetting;;int;DownloadType;0;string;WebSiteUrl;;string;ProxyAddress;;string;"
        "ProxyPort;;string;ProxyUser;;string;ProxyPassword;;string;CacheServerPath;;string;"
        "CacheServerUser;;string;CacheServerPassword;;string;TempDriveLetter;;string;"
        "ExternalMediaPath;;";
    typedef HRESULT (CSomIf::*Wbem)(std::string, IWbemClassObject*, IWbemClassObject**);
    auto wbem = [&](Wbem call) {
        return [&, call] {
            IWbemClassObject* out = nullptr;
            HRESULT rc = (som.*call)("C", &in, &out);
            EXPECT_EQ(out, nullptr);  // left as it was
            return rc;
        };
    };
    // A relayed method keeps of the reply only the result, as ReturnValue.
    long relayed = 0;
    auto relay = [&](Wbem call) {
        return [&, call] {
            IWbemClassObject mine;
            mine.push("ReturnValue", 1L);
            IWbemClassObject* out = &mine;
            HRESULT rc = (som.*call)("C", &in, &out);
            EXPECT_EQ(mine.size(), 1u);
            EXPECT_EQ(*mine.GetAs<long>("ReturnValue"), relayed);
            return rc;
        };
    };
    std::vector<Operation> operations = {
        {"SetUpdatePriority(std::string, const CVelmora_PriorityUpdateParam&)", kWide,
         Request("VELMORA_Nic", "SetUpdatePriority",
                 "class;Velmora_PriorityUpdateParam;;string;AppKey;;uint;UpdatePriority;0;string;"
                 "VendorName;;string;DeviceID;;string;ModuleKind;;"),
         [&] { return som.SetUpdatePriority("VELMORA_Nic", priority); }},
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
         wbem(&CSomIf::CheckUpdateModuleConformity), " C"},
        {"GetProviderManageInfo" + relayArgs, kInt, Request("C", "GetProviderManageInfo"),
         wbem(&CSomIf::GetProviderManageInfo), " C"},
        {"GetUpdatePlans" + relayArgs, kInt, Request("C", "GetUpdatePlans", inText),
         wbem(&CSomIf::GetUpdatePlans), " C"},
        {"ExecMethod(OLECHAR*, OLECHAR*, long int, IWbemContext*, IWbemClassObject*, "
         "IWbemClassObject**, IWbemCallResult**)",
         kInt, Request("C", "M", inText),
         [&] {
             IWbemClassObject* out = nullptr;
             HRESULT rc = som.ExecMethod(const_cast<char*>("C"), const_cast<char*>("M"), 0, nullptr,
                                         &in, &out, nullptr);
             delete out;
             return rc;
         },
         "", 0},
        {"int CSomIf::TransUmMessage(std::string, std::string, IWbemClassObject*, "
         "IWbemClassObject**)",
         kInt, Request("C", "M"),
         [&] {
             IWbemClassObject out;
             IWbemClassObject* outPtr = &out;
             return som.TransUmMessage("C", "M", nullptr, &outPtr);
         },
         " C M"},
    };
    // The relayed methods: wire name, and whether the entry line names the class.
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
                              relay(r.second), r.first == "ExecuteUpdate" ? "" : " C"});
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
    const std::string plan =
        "string;ProviderName;nic;string;VendorName;V;string;UniqueName;U;string;DeviceId;D;string;"
        "ModuleKind;FW;int;UpdatePriority;2;string;CurrentVendorVersion;1;string;NextVendorVersion;"
        "2;string;DisplayName;N;int;UpdateJudgment;0;string;DependencyName;;";
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
        const std::pair<const char*, const char*> alive[] = {
            {"string;Value;abc;int;Type;2;", "abc2"},
            {"int;Type;5;string;Value;abc;", "old5"},      // "Value" not first: kept
            {"string;Value;abc;string;Other;2;", "abc0"},  // another name where "Type" stands
            {"string;Value;abc;", "abc9"}};                // nothing to read: kept
        for (const auto& c : alive) {
            std::string value = "old";
            unsigned type = 9;
            answer(c.first)->AliveMonitorGetParameter("Interval", value, type);
            EXPECT_EQ(value + std::to_string(type), decoded ? c.second : "old9") << c.first;
        }
    }
    // A reply of plans beyond the 8 KiB buffer is cut; the records that fit are read.
    std::string many = "class[];UpdatePlansList;;";
    while (many.size() < 9000)
        many += "string;ProviderName;nic;string;VendorName;V;";
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
    service.Push(Action::Answer("long;ReturnValue;6;"));  // a zero result: ReturnValue
    EXPECT_EQ(som.SetAutoUpdateSetting(update), 6);
    service.Stop();
    update.DayOfWeek = "kept";
    som.GetAutoUpdateSetting(update);
    EXPECT_FALSE(update.IsAutoSetting);
    EXPECT_EQ(update.DayOfWeek, "kept");
}

TEST_F(OperationsTest, ExecMethodKeepsTheReplyAndFailsWithoutLosingOwnership) {
    auto exec = [&](const char* cls, const char* method, IWbemClassObject** out) {
        return som.ExecMethod(const_cast<char*>(cls), const_cast<char*>(method), 0, nullptr,
                              nullptr, out, nullptr);
    };
    service.Push(Action::Answer("long;ReturnValue;3;string;Message;done;"));
    service.Push(Action::Answer("long;ReturnValue;9;", 0x80040001u));
    service.Push(Action::Answer("string;A;x;", 0x80080005u));  // the transport family: returned
    IWbemClassObject* out = nullptr;
    EXPECT_EQ(exec("C", "M", &out), 0);
    std::unique_ptr<IWbemClassObject> owned(out);
    EXPECT_EQ(*out->GetAs<long>("ReturnValue"), 3);
    EXPECT_EQ(*out->GetAs<std::string>("Message"), "done");
    // A service code sets ReturnValue, and the body's own item is appended on top of it.
    out = nullptr;
    EXPECT_EQ(exec("C", "M", &out), 0);
    owned.reset(out);
    EXPECT_EQ(out->size(), 2u);
    EXPECT_EQ(*out->GetAs<long>("ReturnValue"), 9);
    EXPECT_EQ(boost::any_cast<long>(out->begin()->second), static_cast<int>(0x80040001u));
    out = nullptr;
    EXPECT_EQ(exec("C", "M", &out), 0x80080005L);
    owned.reset(out);
    EXPECT_EQ(out->size(), 1u);  // the body, no ReturnValue
    qel_test::TraceRecorder traces;
    out = nullptr;
    EXPECT_EQ(exec(nullptr, "M", &out), -1);
    EXPECT_EQ(exec("C", nullptr, &out), -1);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(traces.Texts().size(), 2u);  // entry lines only
    service.Stop();
    EXPECT_EQ(exec("C", "M", &out), 0x80081001L);
    owned.reset(out);  // created before the exchange
    EXPECT_TRUE(out->empty());
    out = nullptr;
    EXPECT_EQ(som.ExecuteUpdateBackup("C", nullptr, &out), 0x80081001L);
    owned.reset(out);
    EXPECT_TRUE(out->empty());  // no ReturnValue for the transport family
}

TEST_F(OperationsTest, TypedProviderQueriesReadNameAndMapResults) {
    root.WriteFile("/usr/share/hwdata/pci.ids",
                   "8086  Intel Corporation\n\t10fb  82599ES 10-Gigabit SFI/SFP+ Network "
                   "Connection\n14e4  Broadcom Inc. and subsidiaries\n\t1657  NetXtreme "
                   "BCM5719 Gigabit Ethernet PCIe\n");
    CVelmora_DevProviderManageInfo info;
    info.DeviceInfo.resize(5);  // from an earlier query: replaced
    service.Push(Action::Answer(DeviceReply()));
    {
        qel_test::TraceRecorder traces;
        EXPECT_EQ(som.GetProviderManageInfo("VELMORA_NicProvider", info), 0);
        EXPECT_EQ(traces.UnpairedSteps(), std::vector<std::string>());
    }
    ASSERT_EQ(info.DeviceInfo.size(), 3u);
    EXPECT_EQ(info.DeviceInfo[0].DeviceName, "82599ES 10-Gigabit SFI/SFP+ Network Connection");
    EXPECT_EQ(info.DeviceInfo[1].DeviceVendorName, "Broadcom Inc. and subsidiaries");
    EXPECT_EQ(info.DeviceInfo[2].DeviceName, "");              // vendor not in this database
    service.Push(Action::Answer(DeviceReply(), 0x80001234u));  // negative: read, 0x80081101
    EXPECT_EQ(som.GetProviderManageInfo("C", info), 0x80081101L);
    EXPECT_EQ(info.DeviceInfo.size(), 3u);
    service.Push(Action::Answer(DeviceReply(), 0x00000004u));
    EXPECT_EQ(som.GetProviderManageInfo("C", info), 4);
    service.Push(Action::Raw(""));
    info.ProviderName = "kept";
    EXPECT_EQ(som.GetProviderManageInfo("C", info), 0x80081101L);
    EXPECT_TRUE(info.DeviceInfo.empty());
    std::string tools;
    qel::pm::WritePlainText(qel_test::SampleToolProvider(), tools);
    service.Push(Action::Answer(tools));
    CVelmora_ToolProviderManageInfo tool;
    EXPECT_EQ(som.GetProviderManageInfo("VELMORA_ToolProvider", tool), 0);
    EXPECT_EQ(tool.ToolInfo.size(), 2u);
    tool.ToolInfo.clear();  // the receive of a request the caller sent
    service.Push(Action::Answer(tools));
    const std::string head = som.getMsgHead("C", "GetProviderManageInfo", 0);
    EXPECT_EQ(som.SendMessage(head), 55);
    EXPECT_EQ(som.RecvProviderManageInfo(head.size(), tool), 0);
    EXPECT_EQ(tool.ToolInfo.size(), 2u);

    qel_test::TraceRecorder traces;
    EXPECT_EQ(som.RecvProviderManageInfo(60, tool), -1);  // nothing sent, nothing received
    service.Stop();
    info.DeviceInfo.resize(2);
    EXPECT_EQ(som.GetProviderManageInfo("C", info), 0x80081001L);
    EXPECT_TRUE(info.DeviceInfo.empty());
    EXPECT_EQ(info.ProviderName, "kept");
    EXPECT_EQ(traces.Texts()[1],
              "[LEAVE] int CSomIf::RecvProviderManageInfo(size_t, "
              "CVelmora_ToolProviderManageInfo&), rc=-1");
}

TEST_F(OperationsTest, WbemQueriesDecodeOnlyWhenNotNegative) {
    IWbemClassObject in;
    in.push("AppKey", std::string("k"));
    service.Push(
        Action::Answer("class[];UpdatePlansList;;string;ProviderName;P;string;DependencyName;D;"));
    IWbemClassObject* out = nullptr;
    EXPECT_EQ(som.GetUpdatePlans("VELMORA_UpdateManager", &in, &out), 0);
    std::unique_ptr<IWbemClassObject> owned(out);
    EXPECT_EQ((*out->GetAs<Objects*>("UpdatePlansList"))->size(), 1u);
    EXPECT_EQ(out->Get("ReturnValue"), nullptr);
    service.Push(Action::Answer(
        "string;UpdateModuleConformityList;;string;ProviderName;P;string;VendorName;V;string;"
        "UpdateModuleKind;K;class;ModuleInfo;;class;DepoInfo;;class[];ShareInfo;;string;"
        "ProviderName;R;string;UpperVendorVersion;1;class[];SimuInfo;;string;ProviderName;S;",
        0x00000003u));
    IWbemClassObject mine;
    IWbemClassObject* minePtr = &mine;
    qel_test::TraceRecorder traces;
    EXPECT_EQ(som.CheckUpdateModuleConformity("C", nullptr, &minePtr), 3);  // positive: decoded
    EXPECT_EQ(mine.GetAs<Objects>("UpdateModuleConformityList")->size(), 1u);
    EXPECT_EQ(traces.UnpairedSteps(), std::vector<std::string>());
    service.Push(Action::Answer(DeviceReply()));
    IWbemClassObject* tree = nullptr;
    EXPECT_EQ(som.GetProviderManageInfo("VELMORA_NicProvider", &in, &tree), 0);
    std::unique_ptr<IWbemClassObject> ownedTree(tree);
    IWbemClassObject* provider = *tree->GetAs<IWbemClassObject*>("DevProviderManageInfo");
    EXPECT_EQ((*provider->GetAs<Objects*>("DeviceInfo"))->size(), 3u);
}

TEST_F(OperationsTest, ProcessStatusFile) {
    const std::string file = "/opt/velmora/qel/ProcessStatus.ini";
    const std::tuple<const char*, LONG, const char*> cases[] = {
        // file (null: none), status, shown
        {"[icon]\nstatus=download\ntype=rollback\n", 0x8003, "download"},
        {"[icon]\nstatus=update\ntype=update\n", 0x8001, "update"},
        {"[icon]\nstatus=updated-now\ntype=rollback\n", 0x8002, "rollback"},
        {"[icon]\nstatus=idle\n", 0, "idle"},
        {"[other]\nstatus=download\n", 0, ""},
        {"not an ini file at all \x01\x02", 0, ""},
        {nullptr, 0, ""}};
    for (const auto& c : cases) {
        std::get<0>(c) ? root.WriteFile(file, std::get<0>(c)) : root.RemoveFile(file);
        qel_test::TraceRecorder traces;
        LONG status = 77;
        EXPECT_EQ(som.GetQELStatus(status), 0);
        EXPECT_EQ(status, std::get<1>(c));
        char line[160];
        std::snprintf(line, sizeof line, "%s ### status=%s, result=0x%x",
                      "HRESULT CSomIf::GetQELStatus(LONG&)", std::get<2>(c),
                      static_cast<unsigned>(std::get<1>(c)));
        qel_test::TraceLine found{"", 0, ""};
        EXPECT_TRUE(traces.Find(line, &found) && found.level == 1) << line;
    }
}

}  // namespace
