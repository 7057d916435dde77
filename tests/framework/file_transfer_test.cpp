// The socket transport against a scripted service: bytes, limits and faults.
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <vector>

#include "CFileTransfer.h"
#include "support/fake_som_service.h"

namespace {

using qel_test::Action;
using qel_test::FakeSomService;
using qel_test::TempSysroot;

const char kConfig[] = "/opt/velmora/qel/som/socket.conf";
const std::string kHeader = "00000035cafefeedC/M0000000000000000";  // 35 bytes, empty body

class FileTransferTest : public ::testing::Test {
protected:
    TempSysroot root;
};

TEST_F(FileTransferTest, SendsTheWholeMessageAndReadsTheReply) {
    FakeSomService service(root);
    service.Push(Action::Answer("string;A;x;", 0x12));
    CFileTransfer transfer("t", kConfig);
    const std::string message = "00000035cafefeedC/M0000000000000003abc";
    EXPECT_EQ(transfer.SendMessage(message), static_cast<int>(message.size()));
    std::vector<char> buffer(256, 'Z');
    int n = transfer.RecvMessage(buffer.data(), 256, 35);
    const std::string expected = FakeSomService::ReplyText("C", "M", "00000012", "string;A;x;");
    EXPECT_EQ(n, static_cast<int>(expected.size()));
    EXPECT_EQ(std::string(buffer.data()), expected);
    EXPECT_EQ(buffer[n + 1], 'Z');  // nothing written past the NUL
    EXPECT_EQ(service.LastRequest().bytes, message);
    EXPECT_EQ(service.LastRequest().body, "abc");
}

TEST_F(FileTransferTest, ReplyLargerThanTheBufferIsCutAndDrained) {
    FakeSomService service(root);
    service.Push(Action::Answer(std::string(100000, 'b')));
    service.Push(Action::Answer("next"));
    CFileTransfer transfer("t", kConfig);
    std::vector<char> buffer(64 + 1, 'Z');
    ASSERT_NE(transfer.SendMessage(kHeader), -1);
    EXPECT_EQ(transfer.RecvMessage(buffer.data(), 64, 35), 63);
    EXPECT_EQ(buffer[63], '\0');
    EXPECT_EQ(buffer[64], 'Z');
    // The next exchange is not disturbed by what was dropped.
    std::vector<char> big(256);
    ASSERT_NE(transfer.SendMessage(kHeader), -1);
    EXPECT_GT(transfer.RecvMessage(big.data(), 256, 35), 0);
    EXPECT_EQ(std::string(big.data()).substr(35), "next");
}

TEST_F(FileTransferTest, BodyWithoutALengthIsReadUntilTheServiceCloses) {
    FakeSomService service(root);
    Action action = Action::Answer("until-close");
    action.declareBodyLength = false;
    service.Push(action);
    CFileTransfer transfer("t", kConfig);
    std::vector<char> buffer(256);
    ASSERT_NE(transfer.SendMessage(kHeader), -1);
    int n = transfer.RecvMessage(buffer.data(), 256, 35);
    ASSERT_EQ(n, 35 + 11);
    EXPECT_EQ(std::string(buffer.data() + 35), "until-close");
}

TEST_F(FileTransferTest, ShortBodyKeepsWhatCame) {
    FakeSomService service(root);
    service.Push(Action::Raw("00000035cafefeedC/M0000000000000010abc"));
    CFileTransfer transfer("t", kConfig);
    std::vector<char> buffer(256);
    ASSERT_NE(transfer.SendMessage(kHeader), -1);
    EXPECT_EQ(transfer.RecvMessage(buffer.data(), 256, 35), 38);
}

TEST_F(FileTransferTest, FaultsGiveMinusOneWithinTheTimeOut) {
    struct Case {
        const char* what;
        Action action;
        bool sendFails;
    };
    const Case cases[] = {
        {"close without answer", Action::Fault(Action::kCloseWithoutAnswer), false},
        {"half a header", Action::Fault(Action::kCloseAfterHalfHeader), false},
        {"never answers", Action::Fault(Action::kNeverAnswer), false},
        {"garbage shorter than a header", Action::Raw("garbage"), false},
    };
    FakeSomService service(root, /*timeoutSeconds=*/1);
    const int descriptors = qel_test::OpenDescriptorCount();
    for (const Case& c : cases) {
        service.Push(c.action);
        CFileTransfer transfer("t", kConfig);
        std::vector<char> buffer(64, 'Z');
        auto start = std::chrono::steady_clock::now();
        ASSERT_NE(transfer.SendMessage(kHeader), -1) << c.what;
        EXPECT_EQ(transfer.RecvMessage(buffer.data(), 64, 35), -1) << c.what;
        auto seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start);
        EXPECT_LT(seconds.count(), 2.5) << c.what;
    }
    service.WaitForIdle();
    EXPECT_EQ(qel_test::OpenDescriptorCount(), descriptors);
}

TEST_F(FileTransferTest, SendFailsWithoutAUsableService) {
    CFileTransfer transfer("t", kConfig);
    EXPECT_EQ(transfer.SendMessage(kHeader), -1);  // no configuration file
    root.WriteFile(kConfig, "# nothing but a comment\ntimeout=1\n");
    EXPECT_EQ(transfer.SendMessage(kHeader), -1);  // no socket line
    root.WriteFile(kConfig, "socket=" + root.root() + "/absent.sock\n");
    EXPECT_EQ(transfer.SendMessage(kHeader), -1);  // nothing listening
    root.WriteFile(kConfig, "socket=/" + std::string(200, 'x') + "\n");
    EXPECT_EQ(transfer.SendMessage(kHeader), -1);  // path too long for a socket
    char buffer[8];
    EXPECT_EQ(transfer.RecvMessage(buffer, 8, 35), -1);  // no connection
}

TEST_F(FileTransferTest, StoppedServiceIsAbsent) {
    FakeSomService service(root);
    service.Stop();
    CFileTransfer transfer("t", kConfig);
    EXPECT_EQ(transfer.SendMessage(kHeader), -1);
}

TEST_F(FileTransferTest, PeerGoneDuringSendRaisesNoSigpipe) {
    FakeSomService service(root);
    service.Push(Action::Fault(Action::kCloseBeforeRequest));
    // Any SIGPIPE would end the test process.
    struct sigaction previous;
    struct sigaction dflt = {};
    dflt.sa_handler = SIG_DFL;
    sigaction(SIGPIPE, &dflt, &previous);
    CFileTransfer transfer("t", kConfig);
    EXPECT_EQ(transfer.SendMessage(kHeader + std::string(8 * 1024 * 1024, 'x')), -1);
    sigaction(SIGPIPE, &previous, nullptr);
}

TEST_F(FileTransferTest, ConfigurationIsReadAtEachConnect) {
    FakeSomService service(root);
    root.WriteFile(kConfig, "\n  # comment\n  socket  =  " + service.socketPath() +
                                "  \ntimeout = 0\nunknown=1\n");
    CFileTransfer transfer("t", kConfig);
    std::vector<char> buffer(128);
    ASSERT_NE(transfer.SendMessage(kHeader), -1);
    EXPECT_EQ(transfer.RecvMessage(buffer.data(), 128, 35), 35);
    root.WriteFile(kConfig, "socket=" + root.root() + "/moved.sock\n");
    EXPECT_EQ(transfer.SendMessage(kHeader), -1);
}

TEST_F(FileTransferTest, ManyExchangesLeaveNoDescriptorOpen) {
    FakeSomService service(root);
    const int descriptors = qel_test::OpenDescriptorCount();
    for (int i = 0; i < 300; ++i) {
        CFileTransfer transfer("t", kConfig);
        std::vector<char> buffer(128);
        ASSERT_NE(transfer.SendMessage(kHeader), -1);
        ASSERT_EQ(transfer.RecvMessage(buffer.data(), 128, 35), 35);
        if (i % 3 == 0) {
            ASSERT_NE(transfer.SendMessage(kHeader), -1);  // never received
        }
    }
    service.WaitForIdle();
    EXPECT_EQ(qel_test::OpenDescriptorCount(), descriptors);
}

}  // namespace
