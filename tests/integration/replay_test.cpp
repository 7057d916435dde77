// Recording exchanges (QEL_RECORD, somctl record) and replaying them (somd
// --replay, somctl replay-check): the format, masking and byte-identical replay.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <chrono>
#include <fstream>

#include "recording.h"
#include "support/fake_som_service.h"
#include "support/somd_process.h"
#include "support/test_data.h"

namespace {

namespace rec = qel::recording;
using qel_test::ReadFile;

// A SetAutoDownloadSetting message with this body.
std::string Message(const std::string& body) {
    return qel_test::FakeSomService::ReplyText("VELMORA_UpdateManager", "SetAutoDownloadSetting", 0,
                                               body);
}

TEST(RecordingFormat, DamageIsNamedByLine) {
    const std::string head =
        std::string(rec::kVersionLine) + "\nexchange - 5ms\nrequest " + Message("") + "\n";
    const std::tuple<std::string, int, const char*> cases[] = {
        {"", 1, "empty file"},
        {"qel-record 2\n", 1, "version \"2\""},
        {"GET / HTTP/1.1\n", 1, "not a recording"},
        {head, 2, "no \"end\""},  // a half record at the end of the file
        {head + "reply x\n  \\q\nend\n", 5, "broken escape"},
        {head + "reply x\nreply y\nend\n", 5, "second outcome"},
        {head + "bogus\n", 4, "unknown line"},
        {"qel-record 1\nexchange - 1ms\nrequest 0000\nno-reply\nend\n", 5, "no header"},
    };
    for (const auto& [text, line, words] : cases) {
        try {
            rec::ParseRecording(text);
            ADD_FAILURE() << "accepted: " << text;
        } catch (const rec::FormatError& e) {
            EXPECT_EQ(e.line(), line) << text;
            EXPECT_NE(std::string(e.what()).find(words), std::string::npos) << e.what();
        }
    }
}

TEST(RecordingFormat, BytesSurviveAndPasswordsAreMasked) {
    rec::Exchange in;
    in.milliseconds = 7;
    in.request = Message("string;ProxyPassword;se%!@cr;string;A;\\ x;");
    const char odd[] = "\n\t\r\x01\x7f\xc3\xa9 ;\0 ";
    in.reply = Message(std::string(odd, sizeof odd - 1));
    const std::vector<rec::Exchange> out =
        rec::ParseRecording(rec::kVersionLine + ("\n# note\r\n" + rec::FormatExchange(in)));
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0].line, 3);
    EXPECT_EQ(out[0].milliseconds, 7);
    EXPECT_EQ(out[0].request, in.request);
    EXPECT_EQ(out[0].reply, in.reply);
    in.outcome = rec::Outcome::kNotSent;  // a failure keeps its kind and its reason
    in.reason = "connect: no such file";
    const rec::Exchange failed =
        rec::ParseRecording(rec::kVersionLine + ("\n" + rec::FormatExchange(in))).at(0);
    EXPECT_TRUE(failed.outcome == rec::Outcome::kNotSent && failed.reason == in.reason);

    EXPECT_EQ(rec::MaskMessage(in.request),
              Message("string;ProxyPassword;********;string;A;\\ x;"));
    const std::pair<const char*, const char*> bodies[] = {
        {"class;S;;string;S[0]/CacheServerPassword;pw;",
         "class;S;;string;S[0]/CacheServerPassword;********;"},
        {"junk;string;ProxyPassword;pw;long;N;1;", "junk;string;ProxyPassword;********;long;N;1;"},
        {"string;ProxyPassword;;string;ProxyPassword;x",
         "string;ProxyPassword;;string;ProxyPassword;********"},
    };
    for (const auto& body : bodies)
        EXPECT_EQ(rec::MaskBody(body.first), body.second);
}

// The time now in UTC, to the second, as a recording writes it.
std::string UtcNow() {
    const time_t now = time(nullptr);
    struct tm parts;
    char text[32];
    strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", gmtime_r(&now, &parts));
    return text;
}

class ReplayTest : public ::testing::Test {
  protected:
    qel_test::TempSysroot root;
    qel_test::SomdProcess live{root};
    std::string file = root.Path("/demo.rec"), again = root.Path("/again.rec");
    pid_t replay = -1;  // stopped at the end even when a check fails on the way
    int log = -1;
    ~ReplayTest() { StopReplay(); }

    qel_test::ShellRun Somctl(const std::string& args) {
        return qel_test::Shell("$SOMCTL " + args);
    }
    void StartReplay() {
        replay = qel_test::SpawnSomd({"--replay", file}, &log);
        qel_test::AwaitSocket(live.SocketPath());
    }
    // Its log on stderr.
    std::string StopReplay() {
        if (replay <= 0)
            return "";
        kill(replay, SIGTERM);
        qel_test::WaitExit(replay, 10000);
        replay = -1;
        return qel_test::ReadAll(log);
    }
};

TEST_F(ReplayTest, DemoRunReplaysByteForByte) {
    ASSERT_EQ(
        Somctl("download-setting set ProxyPassword=hunter2 CacheServerPassword=swordfish").code, 0);
    const std::string demo[] = {
        "status",
        "versions",
        "plans",
        "download-setting",
        "--app-key a authority take",
        "exec VELMORA_UpdateManager SetAutoDownloadSetting ProxyPassword=hunter2"};
    std::vector<qel_test::ShellRun> outcomes;
    const std::string from = UtcNow();
    for (const std::string& args : demo) {
        outcomes.push_back(Somctl("record " + file + " -- " + args));
        EXPECT_EQ(outcomes.back().code, args.compare(0, 4, "exec") == 0 ? 5 : 0) << args;
    }
    const std::string to = UtcNow();
    struct stat info;
    ASSERT_EQ(stat(file.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);
    const std::string text = ReadFile(file);
    EXPECT_EQ(text.find("hunter2"), std::string::npos);
    EXPECT_EQ(text.find("swordfish"), std::string::npos);
    EXPECT_NE(text.find("\n  string;CacheServerPassword;********;"), std::string::npos);
    // A recording that cannot be opened is traced, and the command still runs.
    const auto unopened =
        qel_test::Shell("QEL_TRACE=- QEL_RECORD=/nonexistent/x.rec $SOMCTL versions");
    EXPECT_EQ(unopened.code, 0);
    EXPECT_NE(unopened.output.find("cannot open /nonexistent/x.rec: No such file or directory"),
              std::string::npos)
        << unopened.output;
    // The live service has changed since: its setting reads differently.
    ASSERT_EQ(Somctl("--app-key a download-setting set IsAutoSetting=true").code, 0);
    const auto check = Somctl("replay-check " + file);
    EXPECT_EQ(check.code, 5);
    EXPECT_NE(check.output.find("GetAutoDownloadSetting: the reply differs"), std::string::npos);
    std::ofstream(file, std::ios::app)
        << "exchange - 300ms\nrequest 00000058cafefeedVELMORA_UpdateManager/Hang0000000000000000\n"
           "no-reply receive: timed out\nend\n";
    live.Stop();

    StartReplay();
    setenv("QEL_RECORD", again.c_str(), 1);
    for (std::size_t i = 0; i < outcomes.size(); ++i) {
        const auto replayed = Somctl(demo[i]);
        EXPECT_EQ(replayed.code, outcomes[i].code) << demo[i];
        EXPECT_EQ(replayed.output, outcomes[i].output);
    }
    unsetenv("QEL_RECORD");
    ASSERT_EQ(stat(again.c_str(), &info), 0);  // made by the library itself this time
    EXPECT_EQ(info.st_mode & 0777, 0600u);
    const std::vector<rec::Exchange> first = rec::ReadRecordingFile(file);
    const std::vector<rec::Exchange> second = rec::ReadRecordingFile(again);
    ASSERT_EQ(first.size(), second.size() + 1);
    for (std::size_t i = 0; i < second.size(); ++i) {
        EXPECT_EQ(first[i].request, second[i].request) << i;
        EXPECT_EQ(first[i].reply, second[i].reply) << i;
        EXPECT_TRUE(first[i].when >= from && first[i].when.substr(0, 19) <= to) << first[i].when;
    }
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(Somctl("exec VELMORA_UpdateManager Hang").code, 4);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(300));
    const auto unrecorded = Somctl("plans --rollback");
    EXPECT_EQ(unrecorded.code, 5);
    EXPECT_NE(unrecorded.output.find("0x8000a008"), std::string::npos);
    const std::string log = StopReplay();
    EXPECT_NE(log.find("GetUpdatePlans; nearest recorded request: line 42: "
                       "VELMORA_UpdateManager/GetUpdatePlans, its body differs from byte 14"),
              std::string::npos)
        << log;

    StartReplay();  // from the first record again
    const auto recheck = Somctl("replay-check " + file);
    EXPECT_EQ(recheck.code, 0) << recheck.output;
    EXPECT_NE(recheck.output.find("skipped, carries a masked password"), std::string::npos);
    StopReplay();

    std::ofstream(again, std::ios::trunc) << text.substr(0, text.size() - 4);  // no "end"
    const auto damaged = qel_test::Shell("$SOMD --replay " + again);
    EXPECT_EQ(damaged.code, 1);
    EXPECT_NE(
        damaged.output.find(again + ":" + std::to_string(first[second.size() - 1].line) + ": "),
        std::string::npos)
        << damaged.output;
}

}  // namespace
