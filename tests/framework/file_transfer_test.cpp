// The socket transport against a scripted service: bytes, limits and faults.
#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <vector>

#include "CFileTransfer.h"
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

    // One exchange; the reply as stored, or "<-1>".
    static std::string Exchange(const std::string& message, int bufferSize) {
        CFileTransfer transfer("t", kConfig);
        if (transfer.SendMessage(message) == -1)
            return "<send failed>";
        std::vector<char> buffer(bufferSize + 8, 'Z');
        int n = transfer.RecvMessage(buffer.data(), bufferSize, 35);
        if (n < 0)
            return "<-1>";
        EXPECT_EQ(buffer[n], '\0');
        EXPECT_EQ(buffer[n + 1], n + 1 < bufferSize ? buffer[n + 1] : 'Z');  // nothing past the NUL
        return std::string(buffer.data(), n);
    }
};

TEST_F(FileTransferTest, RepliesAreStoredCutOrReadToTheClose) {
    FakeSomService service(root);
    service.Push(Action::Answer("string;A;x;", 0x12));
    const std::string request = "00000035cafefeedC/M0000000000000003abc";
    EXPECT_EQ(Exchange(request, 256),
              FakeSomService::ReplyText("C", "M", "00000012", "string;A;x;"));
    EXPECT_EQ(service.LastRequest().bytes, request);
    service.Push(Action::Answer(std::string(100000, 'b')));  // cut at 63 bytes, the rest drained
    service.Push(Action::Answer("next"));
    EXPECT_EQ(Exchange(kHeader, 64).size(), 63u);
    EXPECT_EQ(Exchange(kHeader, 256).substr(35), "next");
    Action noLength = Action::Answer("until-close");
    noLength.declareBodyLength = false;
    service.Push(noLength);
    EXPECT_EQ(Exchange(kHeader, 256).substr(35), "until-close");
    service.Push(Action::Raw("00000035cafefeedC/M0000000000000010abc"));  // short body: kept
    EXPECT_EQ(Exchange(kHeader, 256).size(), 38u);
    service.Push(Action::Raw("garbage"));  // shorter than a header
    EXPECT_EQ(Exchange(kHeader, 256), "<-1>");
}

TEST_F(FileTransferTest, FailuresTellTheirStageAndErrno) {
    using Stage = CFileTransfer::Stage;
    struct Case {
        std::string config;  // "" : no configuration file
        Stage stage;
        int error;
    };
    const Case cases[] = {
        {"", Stage::kConfiguration, ENOENT},
        {"# comment only\ntimeout=1\n", Stage::kConfiguration, 0},
        {"socket=" + root.root() + "/absent.sock\n", Stage::kConnect, ENOENT},
        {"socket=/" + std::string(200, 'x') + "\n", Stage::kConnect, ENAMETOOLONG},
    };
    for (const Case& c : cases) {
        if (!c.config.empty())
            root.WriteFile(kConfig, c.config);
        EXPECT_EQ(Exchange(kHeader, 64), "<send failed>") << c.config;
        CFileTransfer transfer("t", kConfig);
        EXPECT_EQ(transfer.SendMessage(kHeader), -1);
        EXPECT_EQ(transfer.LastFailedStage(), c.stage) << c.config;
        EXPECT_EQ(transfer.LastErrno(), c.error) << c.config;
    }
    CFileTransfer transfer("t", kConfig);
    char buffer[64];
    EXPECT_EQ(transfer.RecvMessage(buffer, 8, 35), -1);  // no connection
    EXPECT_EQ(transfer.LastErrno(), ENOTCONN);
    FakeSomService service(root, /*timeoutSeconds=*/1);
    service.Push(Action::Fault(Action::kNeverAnswer));
    EXPECT_EQ(transfer.SendMessage(kHeader), 35);
    EXPECT_EQ(transfer.LastFailedStage(), Stage::kNone);
    EXPECT_EQ(transfer.SocketPath(), service.socketPath());
    EXPECT_EQ(transfer.TimeoutSeconds(), 1);
    EXPECT_EQ(transfer.RecvMessage(buffer, 64, 35), -1);
    EXPECT_EQ(transfer.LastFailedStage(), Stage::kReceive);
    EXPECT_EQ(transfer.LastErrno(), ETIMEDOUT);
}

TEST_F(FileTransferTest, ConfigurationLinesCommentsAndBadValues) {
    struct Case {
        const char* text;
        const char* socket;  // nullptr: no socket line found
        int timeout;
        const char* trace;  // the error line's text, or "" for none
    };
    const Case cases[] = {
        {"\n  # comment\n  socket  =  /s  \ntimeout = 0\nunknown=1\n", "/s", 0, ""},
        {"socket=/s   # the service\ntimeout=300   # seconds\n", "/s", 300, ""},
        {"socket=/run/a#b.sock\ntimeout=7#x\n", "/run/a#b.sock",
         CFileTransfer::kDefaultTimeoutSeconds,
         "/c: timeout \"7#x\" is not whole seconds from 0 to 2147483; the time-out stays 300 s"},
        {"socket=/s\ntimeout=abc\n", "/s", 300,
         "/c: timeout \"abc\" is not whole seconds from 0 to 2147483; the time-out stays 300 s"},
        {"socket=/s\ntimeout=9\ntimeout=-1\n", "/s", 9,
         "/c: timeout \"-1\" is not whole seconds from 0 to 2147483; the time-out stays 9 s"},
        {"socket=/s\ntimeout=2147484\n", "/s", 300,
         "/c: timeout \"2147484\" is not whole seconds from 0 to 2147483; the time-out stays 300 "
         "s"},
        {"socket=  # nothing\n", nullptr, 300, ""},
    };
    for (const Case& c : cases) {
        root.WriteFile("/c", c.text);
        qel_test::TraceRecorder traces;
        std::string socket;
        int timeout = CFileTransfer::kDefaultTimeoutSeconds;
        EXPECT_EQ(CFileTransfer::ReadConfiguration("/c", socket, timeout), c.socket != nullptr)
            << c.text;
        EXPECT_EQ(socket, c.socket != nullptr ? c.socket : "") << c.text;
        EXPECT_EQ(timeout, c.timeout) << c.text;
        const std::vector<std::string> texts = traces.Texts();
        EXPECT_EQ(texts.empty() ? "" : texts.front(), c.trace) << c.text;
    }
    // Read again at each connect: a moved socket is noticed at once.
    FakeSomService service(root);
    EXPECT_EQ(Exchange(kHeader, 128).size(), 35u);
    root.WriteFile(kConfig, "socket=" + root.root() + "/moved.sock\n");
    EXPECT_EQ(Exchange(kHeader, 128), "<send failed>");
}

TEST_F(FileTransferTest, PeerGoneDuringSendRaisesNoSigpipe) {
    FakeSomService service(root);
    service.Push(Action::Fault(Action::kCloseBeforeRequest));
    struct sigaction previous;
    struct sigaction dflt = {};
    dflt.sa_handler = SIG_DFL;  // a SIGPIPE would end the test process
    sigaction(SIGPIPE, &dflt, &previous);
    CFileTransfer transfer("t", kConfig);
    EXPECT_EQ(transfer.SendMessage(kHeader + std::string(8 * 1024 * 1024, 'x')), -1);
    sigaction(SIGPIPE, &previous, nullptr);
}

}  // namespace
