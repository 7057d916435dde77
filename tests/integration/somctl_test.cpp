// somctl against a real somd: golden tables, JSON, secrets and exit codes.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include <fstream>
#include <sstream>

#include "somctl/somctl.h"
#include "support/somd_process.h"

namespace {

struct Outcome {
    int code;
    std::string out;
    std::string err;
};

Outcome Somctl(const std::vector<std::string>& args) {
    std::ostringstream out, err;
    int code = somctl::RunSomctl(args, out, err);
    return Outcome{code, out.str(), err.str()};
}

// Starts the real somctl binary with its output thrown away; returns its pid.
pid_t StartSomctl(const std::vector<std::string>& args, const std::string& input = "/dev/null") {
    std::vector<std::string> all{QEL_SOMCTL_PATH};
    all.insert(all.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (std::string& arg : all)
        argv.push_back(&arg[0]);
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, input.c_str(), O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    pid_t pid = -1;
    posix_spawn(&pid, QEL_SOMCTL_PATH, &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    return pid;
}

int ExitOf(pid_t pid) {
    int status = 0;
    waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

class SomctlTest : public ::testing::Test {
  protected:
    qel_test::TempSysroot root;
    qel_test::SomdProcess somd{root};
};

TEST_F(SomctlTest, GoldenTables) {
    EXPECT_EQ(Somctl({"versions"}).out,
              "GROUP      FILE               VERSION\n"
              "core       libqel_SomIf.so.1  1.0.0\n"
              "core       somd               1.0.0\n"
              "providers  nicprovider.so     4.1.0\n"
              "providers  gpuprovider.so     2.3.0\n"
              "tools      fwtool             1.4.2\n");
    EXPECT_EQ(Somctl({"services", "alive"}).out,
              "SERVICE     CLASS                ALIVE\n"
              "NicService  VELMORA_NicProvider  yes\n"
              "GpuService  VELMORA_GpuProvider  no\n");
    EXPECT_EQ(Somctl({"status"}).out, "service: answering\nupdate process: idle\n");
    EXPECT_EQ(Somctl({"name", "PCIROOT-10DE-1EB8-0000"}).out,
              "PCIROOT-10DE-1EB8-0000: NVIDIA Corporation TU104GL [Tesla T4]\n");
    EXPECT_EQ(Somctl({"log", "result"}).out, "the result log is empty\n");
    EXPECT_EQ(Somctl({"plans", "--rollback"}).out, "nothing to roll back\n");
}

TEST_F(SomctlTest, JsonForScripts) {
    Outcome plans = Somctl({"--json", "plans"});
    ASSERT_EQ(plans.code, 0);
    nlohmann::json doc = nlohmann::json::parse(plans.out);
    EXPECT_TRUE(doc["ok"].get<bool>());
    EXPECT_EQ(doc["plans"].size(), 3u);
    EXPECT_EQ(doc["plans"][0]["UniqueName"], "nic-0-firmware");
    Outcome update = Somctl({"--json", "update"});
    EXPECT_EQ(nlohmann::json::parse(update.out)["rebootKind"], 1);
}

TEST_F(SomctlTest, PasswordsNeverShow) {
    ASSERT_EQ(Somctl({"download-setting", "set", "ProxyPassword=hunter2",
                      "CacheServerPassword=swordfish", "IsAutoSetting=true"})
                  .code,
              0);
    for (const auto& args : {std::vector<std::string>{"download-setting"},
                             std::vector<std::string>{"--json", "download-setting"}}) {
        Outcome run = Somctl(args);
        EXPECT_EQ(run.code, 0);
        EXPECT_EQ(run.out.find("hunter2"), std::string::npos);
        EXPECT_EQ(run.out.find("swordfish"), std::string::npos);
        EXPECT_NE(run.out.find("********"), std::string::npos);
    }
    Somctl({"download"});
    EXPECT_EQ(Somctl({"log", "download"}).out.find("hunter2"), std::string::npos);
    // "=-" reads the password from standard input; an empty input is refused.
    const std::string input = somd.StatePath() + ".secret";
    std::ofstream(input) << "from-stdin\n";
    EXPECT_EQ(ExitOf(StartSomctl({"download-setting", "set", "ProxyPassword=-"}, input)), 0);
    std::ifstream state(somd.StatePath());
    std::string saved((std::istreambuf_iterator<char>(state)), std::istreambuf_iterator<char>());
    EXPECT_NE(saved.find("from-stdin"), std::string::npos);
    EXPECT_EQ(ExitOf(StartSomctl({"download-setting", "set", "ProxyPassword=-"})), somctl::kUsage);
}

TEST_F(SomctlTest, ExitCodesByKindOfFailure) {
    EXPECT_EQ(Somctl({}).code, somctl::kUsage);
    EXPECT_EQ(Somctl({"frobnicate"}).code, somctl::kUsage);
    EXPECT_EQ(Somctl({"download-setting", "set", "NoSuchField=1"}).code, somctl::kUsage);
    EXPECT_EQ(Somctl({"plans", "--help"}).code, somctl::kOk);
    EXPECT_EQ(Somctl({"--app-key", "a", "authority", "take"}).code, somctl::kOk);
    Outcome refused = Somctl({"--app-key", "b", "authority", "take"});
    EXPECT_EQ(refused.code, somctl::kServiceError);
    EXPECT_NE(refused.err.find("(0x8000a001)"), std::string::npos);
    Outcome json = Somctl({"--json", "frobnicate"});
    EXPECT_FALSE(nlohmann::json::parse(json.out)["ok"].get<bool>());
    somd.Stop();
    Outcome down = Somctl({"versions"});
    EXPECT_EQ(down.code, somctl::kUnreachable);
    EXPECT_NE(down.err.find("not running ("), std::string::npos);
    EXPECT_EQ(Somctl({"status"}).code, somctl::kUnreachable);
}

// Every value is checked before anything is sent: each of these is refused
// with exit 2 and an error naming the field, and the stored record is unchanged.
TEST_F(SomctlTest, InvalidValuesRefusedBeforeSending) {
    const std::string before = Somctl({"--json", "update-setting"}).out;
    const std::vector<std::vector<std::string>> refused = {
        {"update-setting", "set", "IsAutoSetting=ture"},
        {"update-setting", "set", "Time=25:99"},
        {"update-setting", "set", "RepeatType=12abc"},
        {"update-setting", "set", "RepeatType=99999999999"},
        {"update-setting", "set", "DayOfWeek=Funday"},
        {"update-setting", "bogus"},
        {"download-setting", "set", "ProxyPort=http"},
        {"priority", "set", "VELMORA_UpdateManager", "UpdatePriority=-5"},
        {"priority", "set", "VELMORA_UpdateManager"},
        {"plans", "--bogus"},
        {"--app-key"},
        {"--app-key", "team;alice", "authority", "take"},
        {"--app-key", "\xff", "authority", "take"},
        {"--bogus", "status"},
        {"name", "8086:1533"},
        {"providers", "tool", "VELMORA_NicProvider"},
        {"providers", "device", "NoSuch"},
    };
    for (const auto& args : refused) {
        Outcome run = Somctl(args);
        EXPECT_EQ(run.code, somctl::kUsage) << args.back();
        EXPECT_FALSE(run.err.empty()) << args.back();
    }
    EXPECT_EQ(Somctl({"--json", "update-setting"}).out, before);
    for (const auto& args :
         {std::vector<std::string>{"--json"}, std::vector<std::string>{"--json", "bogus\xff"},
          std::vector<std::string>{"--json", "--help"}}) {
        EXPECT_NO_THROW(nlohmann::json::parse(Somctl(args).out)) << args.back();
    }
}

// A change refuses while another key holds the operating authority, and a
// change that goes ahead leaves the authority as it found it.
TEST_F(SomctlTest, ChangesHonourTheAuthority) {
    ASSERT_EQ(Somctl({"update-setting", "set", "RepeatType=2"}).code, somctl::kOk);
    EXPECT_EQ(Somctl({"--app-key", "other", "authority", "take"}).code, somctl::kOk);
    for (const auto& args : {std::vector<std::string>{"update-setting", "set", "RepeatType=3"},
                             std::vector<std::string>{"update"}}) {
        Outcome run = Somctl(args);
        EXPECT_EQ(run.code, somctl::kServiceError) << args[0];
        EXPECT_NE(run.err.find("another application key"), std::string::npos);
    }
    EXPECT_EQ(Somctl({"--app-key", "other", "update-setting", "set", "RepeatType=4"}).code, 0);
    EXPECT_EQ(Somctl({"--app-key", "other", "authority", "release"}).code, somctl::kOk);
}

// Two somctl processes changing different fields of one record at once: both
// acknowledged changes are kept, round after round.
TEST_F(SomctlTest, ConcurrentChangesNeverLost) {
    for (int round = 0; round < 6; ++round) {
        const std::string user = "user" + std::to_string(round);
        const std::string path = "/cache" + std::to_string(round);
        pid_t a = StartSomctl({"download-setting", "set", "ProxyUser=" + user});
        pid_t b = StartSomctl({"download-setting", "set", "CacheServerPath=" + path});
        ASSERT_EQ(ExitOf(a), 0);
        ASSERT_EQ(ExitOf(b), 0);
        nlohmann::json doc = nlohmann::json::parse(Somctl({"--json", "download-setting"}).out);
        EXPECT_EQ(doc["setting"]["ProxyUser"], user);
        EXPECT_EQ(doc["setting"]["CacheServerPath"], path);
    }
}

}  // namespace
