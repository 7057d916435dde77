// Recording exchanges (QEL_RECORD, somctl record) and replaying them (somd
// --replay, somctl replay-check): the format, masking and byte-identical replay.
#include <gtest/gtest.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>

#include "recording.h"
#include "support/somd_process.h"

namespace {

namespace rec = qel::recording;

std::string Slurp(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

int Shell(const std::string& command) {
    const int status = std::system(command.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

const char kRequest[] = "00000076cafefeedVELMORA_UpdateManager/SetAutoDownloadSetting00000000";

TEST(RecordingFormat, DamageIsNamedByLine) {
    const std::string head =
        std::string(rec::kVersionLine) + "\nexchange - 5ms\nrequest " + kRequest + "00000000\n";
    const struct {
        std::string text;
        int line;
        const char* words;
    } cases[] = {
        {"", 1, "empty file"},
        {"qel-record 2\n", 1, "version \"2\""},
        {"GET / HTTP/1.1\n", 1, "not a recording"},
        {head, 2, "no \"end\""},  // a half record at the end of the file
        {head + "reply x\n  \\q\nend\n", 5, "broken escape"},
        {head + "reply x\nreply y\nend\n", 5, "second outcome"},
        {head + "bogus\n", 4, "unknown line"},
        {"qel-record 1\nexchange - 1ms\nrequest 0000\nno-reply\nend\n", 5, "no header"},
    };
    for (const auto& c : cases) {
        try {
            rec::ParseRecording(c.text);
            ADD_FAILURE() << "accepted: " << c.text;
        } catch (const rec::FormatError& e) {
            EXPECT_EQ(e.line(), c.line) << c.text;
            EXPECT_NE(std::string(e.what()).find(c.words), std::string::npos) << e.what();
        }
    }
}

// A request of kRequest's class and method with this body.
std::string Message(const std::string& body) {
    char length[16];
    std::snprintf(length, sizeof length, "%08zu", body.size());
    return kRequest + (length + body);
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

class ReplayTest : public ::testing::Test {
  protected:
    qel_test::TempSysroot root;
    qel_test::SomdProcess live{root};
    std::string file = root.Path("/demo.rec"), out = root.Path("/out.txt");
    std::string log = root.Path("/somd.log"), again = root.Path("/again.rec");
    pid_t replay = -1;  // stopped at the end even when a check fails on the way
    ~ReplayTest() { Stop(); }

    int Somctl(const std::string& args) {
        return Shell(std::string(QEL_SOMCTL_PATH) + " " + args + " >" + out + " 2>&1");
    }
    void StartReplay() {
        const char* argv[] = {QEL_SOMD_PATH, "--replay", file.c_str(), nullptr};
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 2, log.c_str(), O_WRONLY | O_CREAT, 0600);
        posix_spawn(&replay, argv[0], &actions, nullptr, const_cast<char**>(argv), environ);
        posix_spawn_file_actions_destroy(&actions);
        for (int i = 0; i < 200 && access(root.Path("/run/som.sock").c_str(), F_OK) != 0; ++i)
            usleep(20000);
    }
    void Stop() {
        if (replay > 0 && kill(replay, SIGTERM) == 0)
            waitpid(replay, nullptr, 0);
        replay = -1;
    }
};

TEST_F(ReplayTest, DemoRunReplaysByteForByte) {
    ASSERT_EQ(Somctl("download-setting set ProxyPassword=hunter2 CacheServerPassword=swordfish"),
              0);
    const std::string demo[] = {
        "status",
        "versions",
        "plans",
        "download-setting",
        "--app-key a authority take",
        "exec VELMORA_UpdateManager SetAutoDownloadSetting ProxyPassword=hunter2"};
    std::vector<std::pair<int, std::string>> outcomes;
    for (const std::string& args : demo) {
        const int code = Somctl("record " + file + " -- " + args);
        EXPECT_EQ(code, args.compare(0, 4, "exec") == 0 ? 5 : 0) << args;
        outcomes.emplace_back(code, Slurp(out));
    }
    struct stat info;
    ASSERT_EQ(stat(file.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);
    const std::string text = Slurp(file);
    EXPECT_EQ(text.find("hunter2"), std::string::npos);
    EXPECT_EQ(text.find("swordfish"), std::string::npos);
    EXPECT_NE(text.find("\n  string;CacheServerPassword;********;"), std::string::npos);
    // The live service has changed since: its setting reads differently.
    ASSERT_EQ(Somctl("--app-key a download-setting set IsAutoSetting=true"), 0);
    EXPECT_EQ(Somctl("replay-check " + file), 5);
    EXPECT_NE(Slurp(out).find("GetAutoDownloadSetting: the reply differs"), std::string::npos);
    std::ofstream(file, std::ios::app)
        << "exchange - 300ms\nrequest 00000058cafefeedVELMORA_UpdateManager/Hang0000000000000000\n"
           "no-reply receive: timed out\nend\n";
    live.Stop();

    StartReplay();
    setenv("QEL_RECORD", again.c_str(), 1);
    for (std::size_t i = 0; i < outcomes.size(); ++i) {
        EXPECT_EQ(Somctl(demo[i]), outcomes[i].first) << demo[i];
        EXPECT_EQ(Slurp(out), outcomes[i].second);
    }
    unsetenv("QEL_RECORD");
    const std::vector<rec::Exchange> first = rec::ReadRecordingFile(file);
    const std::vector<rec::Exchange> second = rec::ReadRecordingFile(again);
    ASSERT_EQ(first.size(), second.size() + 1);
    for (std::size_t i = 0; i < second.size(); ++i) {
        EXPECT_EQ(first[i].request, second[i].request) << i;
        EXPECT_EQ(first[i].reply, second[i].reply) << i;
    }
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(Somctl("exec VELMORA_UpdateManager Hang"), 4);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(300));
    EXPECT_EQ(Somctl("plans --rollback"), 5);
    EXPECT_NE(Slurp(out).find("0x8000a008"), std::string::npos);
    Stop();
    EXPECT_NE(
        Slurp(log).find("GetUpdatePlans; nearest recorded request: line 42: "
                        "VELMORA_UpdateManager/GetUpdatePlans, its body differs from byte 14"),
        std::string::npos)
        << Slurp(log);

    StartReplay();  // from the first record again
    EXPECT_EQ(Somctl("replay-check " + file), 0) << Slurp(out);
    EXPECT_NE(Slurp(out).find("skipped, carries a masked password"), std::string::npos);
    Stop();

    std::ofstream(again, std::ios::trunc) << text.substr(0, text.size() - 4);  // no "end"
    EXPECT_EQ(Shell(std::string(QEL_SOMD_PATH) + " --replay " + again + " 2>" + log), 1);
    EXPECT_NE(Slurp(log).find(again + ":" + std::to_string(first[second.size() - 1].line) + ": "),
              std::string::npos)
        << Slurp(log);
}

}  // namespace
