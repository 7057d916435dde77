// CSomIf's header, exchange and result reading, through a real socket.
#include <gtest/gtest.h>

#include <chrono>

#include "CSomIf.h"
#include "support/fake_som_service.h"
#include "support/trace_recorder.h"

namespace {

using qel_test::Action;
using qel_test::FakeSomService;
using qel_test::TraceRecorder;

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

TEST(ResultTest, ResultFieldThenReturnValueWithTraces) {
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
}

TEST(ResultTest, BodyPositionAndRebootKind) {
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

}  // namespace
