// The socket transport against a scripted service: bytes, limits and faults.
#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <tuple>
#include <vector>

#include "CFileTransfer.h"
#include "CResultCode.h"
#include "support/fake_som_service.h"
#include "support/trace_recorder.h"

namespace {

using qel_test::Action;
using qel_test::FakeSomService;

const char kConfig[] = "/opt/velmora/qel/som/socket.conf";
const std::string kHeader = "00000035cafefeedC/M0000000000000000";  // 35 bytes, empty body

class FileTransferTest : public ::testing::Test {
  protected:
    qel_test::TempSysroot root;
    CFileTransfer reused{"t", kConfig};  // Exchange's storage carries over between calls

    // The reply as stored, or "<rc>", of one exchange through SendMessage and
    // RecvMessage; the same script run through Exchange into the reused
    // object's storage must store the same bytes.
    std::string Exchange(FakeSomService& service, const Action& action, int bufferSize) {
        std::vector<char> buffer(bufferSize + 1, 'Z');
        int n = -2;
        service.Push(action);
        service.Push(action);
        {
            CFileTransfer transfer("t", kConfig);
            if (transfer.SendMessage(kHeader) >= 0)
                n = transfer.RecvMessage(buffer.data(), bufferSize, 35);
        }
        EXPECT_EQ(buffer[bufferSize], 'Z');  // nothing written beyond the room
        const int m = reused.Exchange(kHeader, 35, static_cast<std::size_t>(bufferSize));
        EXPECT_EQ(Stored(m, reused.ReplyBytes()), Stored(n, buffer.data()));
        return Stored(n, buffer.data());
    }
    static std::string Stored(int n, const char* text) {
        EXPECT_EQ(text[n < 0 ? 0 : n], '\0');  // "" when nothing came whole
        return n < 0 ? "<" + std::to_string(n) + ">" : std::string(text, n);
    }
};

TEST_F(FileTransferTest, RepliesAreStoredCutOrReadToTheClose) {
    FakeSomService service(root);
    const std::string reply = FakeSomService::ReplyText("C", "M", 0x12, "string;A;x;");
    const std::string noLength = kHeader.substr(0, 27) + "????????until-close";
    const std::string big(100000, 'b');
    const struct {
        Action action;
        int bufferSize;
        std::string stored;
    } cases[] = {
        {Action::Raw(reply), 256, reply},
        {Action::Answer(big), 64, FakeSomService::ReplyText("C", "M", 0, big).substr(0, 63)},
        {Action::Answer(big), 200000, FakeSomService::ReplyText("C", "M", 0, big)},
        // The header read takes 35 + 4096 bytes and leaves room for one more.
        {Action::Answer(big), 4133, FakeSomService::ReplyText("C", "M", 0, big).substr(0, 4132)},
        {Action::Raw(kHeader.substr(0, 27) + "00000004next and more"), 256,
         kHeader.substr(0, 27) + "00000004next"},  // the length field decides
        {Action::Raw(noLength + std::string(9000, 'u')), 256,
         (noLength + std::string(9000, 'u')).substr(0, 255)},
        {Action::Raw(noLength + std::string(9000, 'u')), 20000, noLength + std::string(9000, 'u')},
        {Action::Raw(noLength), 256, noLength},
        {Action::Raw(kHeader.substr(0, 27) + "00000010abc"), 256,
         kHeader.substr(0, 27) + "00000010abc"},
        {Action::Raw("garbage"), 256, "<-1>"},  // shorter than a header
    };
    for (const auto& c : cases)
        EXPECT_EQ(Exchange(service, c.action, c.bufferSize), c.stored) << c.stored.substr(0, 40);
    EXPECT_EQ(reused.Exchange(kHeader, 35, 0), 0);  // no room at all: the reply is drained
    EXPECT_STREQ(reused.ReplyBytes(), "");
}

TEST_F(FileTransferTest, FailuresTellTheirStageAndErrnoLeakNothingAndRaiseNoSigpipe) {
    using Stage = CFileTransfer::Stage;
    const int descriptors = qel_test::OpenDescriptorCount();  // no listener open yet
    const struct {
        std::string config;  // "" : no configuration file
        Stage stage;
        int error;
    } cases[] = {
        {"", Stage::kConfiguration, ENOENT},
        // No socket line, or one whose value is all comment.
        {"# comment only\nsocket=  # nothing\ntimeout=1\n", Stage::kConfiguration, 0},
        {"socket=" + root.root() + "/absent.sock\n", Stage::kConnect, ENOENT},
        {"socket=/" + std::string(200, 'x') + "\n", Stage::kConnect, ENAMETOOLONG},
    };
    for (const auto& c : cases) {
        if (!c.config.empty())
            root.WriteFile(kConfig, c.config);
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(reused.Exchange(kHeader, 35, 64), CFileTransfer::kNotSent);
            EXPECT_STREQ(reused.ReplyBytes(), "");
            EXPECT_EQ(reused.SendMessage(kHeader), -1);
            EXPECT_EQ(reused.LastFailedStage(), c.stage) << c.config;
            EXPECT_EQ(reused.LastErrno(), c.error) << c.config;
        }
    }
    EXPECT_EQ(qel_test::OpenDescriptorCount(), descriptors);
    char buffer[64] = "pre-filled";
    EXPECT_EQ(reused.RecvMessage(buffer, 8, 35), -1);  // no connection
    EXPECT_EQ(reused.LastErrno(), ENOTCONN);
    FakeSomService service(root, /*timeoutSeconds=*/1);
    service.Push(Action::Answer(""));  // each connection takes the next action
    service.Push(Action::Fault(Action::kNeverAnswer));
    EXPECT_EQ(reused.SendMessage(kHeader), 35);
    EXPECT_EQ(reused.RecvMessage(nullptr, 64, 35), -1);  // connected, but nowhere to put it
    EXPECT_EQ(reused.LastErrno(), EINVAL);
    EXPECT_EQ(reused.SendMessage(kHeader), 35);
    EXPECT_EQ(reused.LastFailedStage(), Stage::kNone);
    EXPECT_EQ(reused.RecvMessage(buffer, 64, 35), -1);
    EXPECT_EQ(reused.LastFailedStage(), Stage::kReceive);
    EXPECT_EQ(reused.LastErrno(), ETIMEDOUT);
    EXPECT_STREQ(buffer, "");
    // A peer gone during a long send: no SIGPIPE.
    service.Push(Action::Fault(Action::kCloseBeforeRequest));
    struct sigaction previous;
    struct sigaction dflt = {};
    dflt.sa_handler = SIG_DFL;  // a SIGPIPE would end the test process
    sigaction(SIGPIPE, &dflt, &previous);
    EXPECT_EQ(reused.Exchange(kHeader + std::string(8 * 1024 * 1024, 'x'), 35, 64),
              CFileTransfer::kNotSent);
    sigaction(SIGPIPE, &previous, nullptr);
}

TEST_F(FileTransferTest, ConfigurationLinesCommentsAndBadValues) {
    const std::string stays = "is not whole seconds from 0 to 2147483; the time-out stays ";
    const struct {
        const char* text;
        const char* socket;
        int timeout;
        std::string trace;  // the error line's text, or "" for none
    } cases[] = {
        {"\n  # comment\n  socket  =  /s  \ntimeout = 0\nunknown=1\n", "/s", 0, ""},
        {"socket=/s   # the service\ntimeout=300   # seconds\n", "/s", 300, ""},
        {"socket=/run/a#b.sock\ntimeout=7#x\n", "/run/a#b.sock", 300,
         "/c: timeout \"7#x\" " + stays + "300 s"},
        {"socket=/s\ntimeout=9\ntimeout=-1\n", "/s", 9, "/c: timeout \"-1\" " + stays + "9 s"},
        {"socket=/s\ntimeout=2147484\n", "/s", 300, "/c: timeout \"2147484\" " + stays + "300 s"},
    };
    for (const auto& c : cases) {
        root.WriteFile("/c", c.text);
        qel_test::TraceRecorder traces;
        std::string socket;
        int timeout = CFileTransfer::kDefaultTimeoutSeconds;
        EXPECT_TRUE(CFileTransfer::ReadConfiguration("/c", socket, timeout));
        EXPECT_EQ(socket, c.socket) << c.text;
        EXPECT_EQ(timeout, c.timeout) << c.text;
        const std::vector<std::string> texts = traces.Texts();
        EXPECT_EQ(texts.empty() ? "" : texts.front(), c.trace) << c.text;
    }
    // One object notices every change of the file: moved, back, then gone.
    FakeSomService service(root);
    const std::string config = "socket=" + service.socketPath() + "\n";
    for (const std::string& text : {config, "socket=" + root.root() + "/moved.sock\n", config}) {
        root.WriteFile(kConfig, text);
        EXPECT_EQ(reused.Exchange(kHeader, 35, 128) == 35, text == config) << text;
    }
    root.RemoveFile(kConfig);
    EXPECT_EQ(reused.SendMessage(kHeader), -1);
    EXPECT_EQ(reused.LastErrno(), ENOENT);
}

}  // namespace

// The words and the family of a code, as somctl and the traces print them.
TEST(ResultCodeTest, CodesAreClassifiedAndPutIntoWords) {
    const std::tuple<uint32_t, bool, bool, const char*> cases[] = {
        {CResultCode::kOk, false, false, "success"},
        {CResultCode::kNotSent, true, false, "the request could not be sent"},
        {CResultCode::kNoReply, true, false, "no reply came within the time-out"},
        {CResultCode::kAuthorityHeld, false, true,
         "the operating authority is held by another application key"},
        {CResultCode::kNotRecorded, false, true,
         "no recorded reply matches the request (a replaying service)"},
        {0x80081234u, true, false, "transport failure 0x80081234"},
        {0x00000004u, false, false, "unknown result code 0x00000004"},
    };
    for (const auto& [code, transport, service, words] : cases) {
        EXPECT_EQ(CResultCode::IsTransport(code), transport) << words;
        EXPECT_EQ(CResultCode::IsService(code), service) << words;
        EXPECT_EQ(CResultCode::Describe(code), words);
    }
}
