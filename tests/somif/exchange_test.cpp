// CSomIf's header, exchange and result reading, through a real socket.
#include <gtest/gtest.h>

#include <chrono>

#include "CSomIf.h"
#include "support/fake_som_service.h"
#include "support/trace_recorder.h"

namespace {

using qel_test::Action;
using qel_test::FakeSomService;
using qel_test::TempSysroot;
using qel_test::TraceRecorder;

TEST(MessageHeaderTest, HeadersNamesAndHandBuiltItems) {
    qel_test::TraceRecorder traces;
    {
        CSomIf som("front");
        EXPECT_EQ(som.getMsgHead("VELMORA_UpdateManager", "ExecuteReboot", 0),
                  "00000067cafefeedVELMORA_UpdateManager/ExecuteReboot0000000000000000");
        EXPECT_EQ(som.getMsgHead("VELMORA_ToolServiceWD", "AliveMonitorGetParameter", 37),
                  "00000078cafefeedVELMORA_ToolServiceWD/AliveMonitorGetParameter0000000000000037");
        EXPECT_EQ(som.getMsgHead("C", "HRESULT CSomIf::ExecuteReboot()", 99999999),
                  "00000047cafefeedC/ExecuteReboot0000000099999999");
        CMofContents mof;
        mof.ClassName = "VELMORA_NicProvider";
        EXPECT_EQ(som.getMsgHead(mof, "M", 0), som.getMsgHead("VELMORA_NicProvider", "M", 0));
        const std::pair<const char*, const char*> names[] = {
            {"ExecuteUpdate", "ExecuteUpdate"},
            {"HRESULT CSomIf::ExecuteReboot()", "ExecuteReboot"},
            {"HRESULT CSomIf::AliveMonitorSetParameter(std::string, std::string)",
             "AliveMonitorSetParameter"},
            {"", ""},
            {"Plain(", "Plain"}};
        for (const auto& c : names)
            EXPECT_EQ(som.getShortFuncName(c.first), c.second);
        EXPECT_EQ(som.getBoolParam("Rollback", true), "bool;Rollback;1;");
        EXPECT_EQ(som.getBoolParam("Rollback", false), "bool;Rollback;0;");
        EXPECT_EQ(som.getStrParam("key-1"), "string;AppKey;key-1;");
    }
    const std::vector<std::string> texts = traces.Texts();
    EXPECT_EQ(texts.front(), "[ENTER] CSomIf::CSomIf(std::string)");
    EXPECT_EQ(texts[1], "[LEAVE] CSomIf::CSomIf(std::string)");
    EXPECT_EQ(texts[2],
              "[ENTER] std::string CSomIf::getMsgHead(std::string, const char*, uint32_t)");
    EXPECT_EQ(texts[3],
              "[LEAVE] std::string CSomIf::getMsgHead(std::string, const char*, uint32_t)");
    EXPECT_EQ(texts.back(), "[LEAVE] virtual CSomIf::~CSomIf()");
    for (const auto& line : traces.Lines())
        EXPECT_EQ(line.source + std::to_string(line.level), "front4");
}

// A reply to class "C", method "M": header length 35.
std::string Reply(const std::string& field, const std::string& body) {
    return FakeSomService::ReplyText("C", "M", field, body);
}

TEST(ResultTest, ResultFieldThenReturnValue) {
    struct Case {
        std::string reply;
        int headerLength;
        HRESULT expected;
    };
    const Case cases[] = {
        {Reply("80081001", "long;ReturnValue;5;"), 35, 0x80081001L},
        {Reply("00000000", "long;ReturnValue;5;"), 35, 5},
        {Reply("00000000", "string;A;x;long;ReturnValue;-2;"), 35, -2},
        {Reply("00000000", "string;A;x;"), 35, 0},
        {Reply("zzzzzzzz", "long;ReturnValue;7;"), 35, 7},
        {Reply("0000001g", ""), 35, 1},
        {Reply("00000000", "long;ReturnValue; +12ab;"), 35, 12},
        {Reply("00000000", "long;ReturnValue;9"), 35, 9},  // no closing ";"
        {Reply("00000000", "int;ReturnValue;9;"), 35, 0},  // not a long item
        {"", 35, 0},                                       // shorter than a header
        {"00000035cafefeedC/M00", 35, 0},                  // cut in the result field
        {Reply("00000000", "long;ReturnValue;3;"), 2, 3},  // nonsense header length
    };
    CSomIf som("res");
    for (const Case& c : cases) {
        EXPECT_EQ(som.getResult(c.headerLength, c.reply.c_str()), c.expected) << c.reply;
    }
    EXPECT_EQ(som.getResult(35, nullptr), 0);
}

TEST(ResultTest, TracesPrintBothResultForms) {
    TraceRecorder traces;
    CSomIf som("res");
    som.getResult(35, Reply("00000000", "long;ReturnValue;-2146955263;").c_str());
    EXPECT_TRUE(traces.Contains("[ENTER] HRESULT CSomIf::getResult(int, const char*)"));
    EXPECT_TRUE(
        traces.Contains("[LEAVE] HRESULT CSomIf::GetReturnValue(std::string), rc=-2146955263"));
    EXPECT_TRUE(
        traces.Contains("[LEAVE] HRESULT CSomIf::getResult(int, const char*), rc=-2146955263"));
    traces.Clear();
    som.getResult(35, Reply("80081101", "").c_str());
    EXPECT_TRUE(
        traces.Contains("[LEAVE] HRESULT CSomIf::getResult(int, const char*), rc=-2146955007"));
}

TEST(ResultTest, BodyPositionRebootKindAndReturnValueSearch) {
    CSomIf som("res");
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
        {"x", 0}};
    for (const auto& c : reboots)
        EXPECT_EQ(som.getRebootKind(c.first), c.second) << c.first;
    EXPECT_EQ(som.getRebootKind(nullptr), 0);
    // The item text inside the header's class name is not the body.
    EXPECT_EQ(
        som.GetReturnValue(FakeSomService::ReplyText("long;ReturnValue;4;", "M", "00000000", "")),
        0);
    EXPECT_EQ(som.GetReturnValue("00000099short"), 0);
    EXPECT_EQ(som.GetReturnValue("xxxxxxxxlong;ReturnValue;6;"), 6);  // no digits: offset 0
}

class ExchangeTest : public ::testing::Test {
  protected:
    TempSysroot root;
};

TEST_F(ExchangeTest, TheThreeExchangeForms) {
    FakeSomService service(root);
    service.Push(Action::Answer("long;ReturnValue;3;"));
    service.Push(Action::Answer("", 0x80080001u));
    service.Push(Action::Answer(std::string(100, 'x')));
    CSomIf som("ex");
    std::string body = "string;Name;abc;";
    EXPECT_EQ(som.TransMessage("Method", "VELMORA_Class", body), 3);
    EXPECT_EQ(service.LastRequest().bytes,
              "00000052cafefeedVELMORA_Class/Method0000000000000016string;Name;abc;");
    EXPECT_EQ(body, FakeSomService::ReplyText("VELMORA_Class", "Method", "00000000",
                                              "long;ReturnValue;3;"));
    EXPECT_EQ(som.TransMessage("ExecuteReboot", "C", nullptr), static_cast<int>(0x80080001u));
    EXPECT_EQ(service.LastRequest().bytes, "00000047cafefeedC/ExecuteReboot0000000000000000");
    std::vector<char> buffer(64, 'Z');
    body.clear();
    EXPECT_EQ(som.TransMessage("M", "C", body, buffer.data(), 64), 0);
    EXPECT_EQ(std::string(buffer.data()).size(), 63u);  // the reply stays in the buffer
}

TEST_F(ExchangeTest, HeadersBeyondTheBufferAreNeverSent) {
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
        EXPECT_EQ(som.TransMessage("M", className, body), static_cast<int>(0x80081001u));
        EXPECT_EQ(body, "");
        CVelmora_ToolProviderManageInfo tools;
        EXPECT_EQ(som.GetProviderManageInfo(className, tools), 0x80081001u);
        // Cut, not overrun, when asked for directly.
        EXPECT_EQ(som.getMsgHead(className, "M", 0).size(), 1023u);
    }
    EXPECT_LT(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(), 1);
    EXPECT_EQ(service.RequestCount(), 1u);
    std::vector<std::string> errors;
    for (const auto& line : traces.Lines()) {
        if (line.level == 2)
            errors.push_back(line.text);
    }
    ASSERT_EQ(errors.size(), 6u);
    EXPECT_EQ(errors[0],
              "std::string CSomIf::getMsgHead(std::string, const char*, uint32_t) a header of "
              "1024 bytes does not fit the 1024-byte buffer: not sent");
    EXPECT_NE(errors[3].find(" a header of 5034 bytes does not fit"), std::string::npos);
}

TEST_F(ExchangeTest, FailedExchangesGiveTheirCodesAndAnEmptyText) {
    struct Case {
        const char* what;
        Action action;
        int expected;
    };
    const Case cases[] = {
        {"closes without answering", Action::Fault(Action::kCloseWithoutAnswer),
         static_cast<int>(0x80081101u)},
        {"half a header", Action::Fault(Action::kCloseAfterHalfHeader),
         static_cast<int>(0x80081101u)},
        {"never answers", Action::Fault(Action::kNeverAnswer), static_cast<int>(0x80081101u)},
        {"closes before the request", Action::Fault(Action::kCloseBeforeRequest),
         static_cast<int>(0x80081101u)},
    };
    FakeSomService service(root, /*timeoutSeconds=*/1);
    const int descriptors = qel_test::OpenDescriptorCount();
    CSomIf som("ex");
    for (const Case& c : cases) {
        service.Push(c.action);
        std::string body = "stale text";
        auto start = std::chrono::steady_clock::now();
        int rc = som.TransMessage("M", "C", body);
        auto seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start);
        // A service that closes before reading may also fail the send.
        if (c.action.kind == Action::kCloseBeforeRequest && rc == static_cast<int>(0x80081001u)) {
            rc = c.expected;
        }
        EXPECT_EQ(rc, c.expected) << c.what;
        EXPECT_EQ(body, "") << c.what;
        EXPECT_LT(seconds.count(), 2.5) << c.what;
    }
    service.Stop();
    std::string body = "stale";
    EXPECT_EQ(som.TransMessage("M", "C", body), static_cast<int>(0x80081001u));
    EXPECT_EQ(body, "");
    EXPECT_LE(qel_test::OpenDescriptorCount(), descriptors);  // the listener is gone too
}

TEST_F(ExchangeTest, OversizedRepliesRestartsAndTenThousandExchanges) {
    {
        FakeSomService service(root);
        service.Push(Action::Answer(std::string(5 * 1024 * 1024, 'x')));
        CSomIf som("big");
        std::string body;
        EXPECT_EQ(som.TransMessage("M", "C", body), 0);
        EXPECT_EQ(body.size(), 0x400000u - 1);  // cut at the 4 MiB buffer, the rest drained
    }
    {
        // The service restarts between two calls on one object.
        FakeSomService service(root);
        CSomIf som("restart");
        std::string body;
        EXPECT_EQ(som.TransMessage("M", "C", body), 0);
        service.Stop();
        EXPECT_EQ(som.TransMessage("M", "C", body), static_cast<int>(0x80081001u));
    }
    FakeSomService again(root);
    CSomIf som("many");
    const int descriptors = qel_test::OpenDescriptorCount();
    for (int i = 0; i < 10000; ++i) {
        ASSERT_EQ(som.TransMessage("M", "C", nullptr), 0) << i;
    }
    again.WaitForIdle();
    EXPECT_EQ(qel_test::OpenDescriptorCount(), descriptors);
}

}  // namespace
