// somctl against a real somd: tables, JSON, secrets, exit codes and input checks.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sys/stat.h>
#include <unistd.h>

#include <sstream>

#include "somctl/output.h"
#include "somctl/somctl.h"
#include "support/somd_process.h"

namespace {

using Args = std::vector<std::string>;
using qel_test::Shell;

struct Outcome {
    int code;
    std::string out, err;
};

Outcome Somctl(const Args& args) {
    std::ostringstream out, err;
    int code = somctl::RunSomctl(args, out, err);
    return Outcome{code, out.str(), err.str()};
}

nlohmann::json Json(Args args) {
    args.insert(args.begin(), "--json");
    return nlohmann::json::parse(Somctl(args).out);
}

class SomctlTest : public ::testing::Test {
  protected:
    qel_test::TempSysroot root;
    qel_test::SomdProcess somd{root};
};

// Tables and JSON as they are printed; passwords never show, and "NAME=-"
// reads one from standard input (an empty input is refused).
TEST_F(SomctlTest, GoldenTablesJsonAndPasswords) {
    EXPECT_EQ(Somctl({"services", "alive"}).out,
              "SERVICE     CLASS                ALIVE\n"
              "NicService  VELMORA_NicProvider  yes\n"
              "GpuService  VELMORA_GpuProvider  no\n");
    EXPECT_EQ(Somctl({"status"}).out, "service: answering\nupdate process: idle\n");
    EXPECT_EQ(Somctl({"name", "PCIROOT-10DE-1EB8-0000"}).out,
              "PCIROOT-10DE-1EB8-0000: NVIDIA Corporation TU104GL [Tesla T4]\n");
    EXPECT_EQ(Somctl({"plans", "--rollback"}).out, "nothing to roll back\n");
    const nlohmann::json plans = Json({"plans"});
    EXPECT_EQ(plans["plans"].size(), 3u);
    EXPECT_EQ(plans["plans"][0]["UniqueName"], "nic-0-firmware");
    EXPECT_EQ(Json({"--yes", "update"})["rebootKind"], 1);
    // Cells are cut to the width by display columns; control bytes never reach the terminal.
    somctl::Table table({"NAME", "VALUE"});
    table.Row({"\xe6\xbc\xa2\xe5\xad\x97\xe5\x90\x8d", "caf\xc3\xa9\x1b[2J\xff"});
    std::ostringstream narrow;
    table.Print(narrow, 14);
    EXPECT_EQ(narrow.str(),
              "NAME    VALUE\n\xe6\xbc\xa2\xe5\xad\x97\xe5\x90\x8d  caf\xc3\xa9?\xe2\x80\xa6\n");

    ASSERT_EQ(Somctl({"download-setting", "set", "ProxyPassword=hunter2",
                      "CacheServerPassword=swordfish"})
                  .code,
              0);
    const std::string shown = Somctl({"download-setting"}).out;
    EXPECT_NE(shown.find("CacheServerPassword  ********\n"), std::string::npos) << shown;
    EXPECT_NE(shown.find("ProxyPassword        ********\n"), std::string::npos) << shown;
    const nlohmann::json setting = Json({"download-setting"})["setting"];
    EXPECT_EQ(setting["ProxyPassword"], "********");
    EXPECT_EQ(setting["CacheServerPassword"], "********");
    EXPECT_EQ(Shell("echo from-stdin | $SOMCTL download-setting set ProxyPassword=-").code, 0);
    EXPECT_EQ(Shell("grep -q from-stdin " + somd.StatePath()).code, 0);
    EXPECT_EQ(Shell("$SOMCTL download-setting set ProxyPassword=- </dev/null").code,
              somctl::kUsage);
}

// Each kind of failure has its exit code and says what failed.
TEST_F(SomctlTest, ExitCodesByKindOfFailure) {
    const std::tuple<Args, int, const char*> live[] = {
        {{}, somctl::kUsage, ""},
        {{"frobnicate"}, somctl::kUsage, "unknown command"},
        {{"plans", "--help"}, somctl::kOk, ""},
        // A change leaves the authority as it found it, and refuses while another key holds it.
        {{"update-setting", "set", "RepeatType=2"}, somctl::kOk, ""},
        {{"--app-key", "a", "authority", "take"}, somctl::kOk, ""},
        {{"--app-key", "b", "authority", "take"}, somctl::kServiceError, "(0x8000a001)"},
        {{"--app-key", "b", "update-setting", "set", "RepeatType=3"},
         somctl::kServiceError,
         "another application key"},
        {{"--app-key", "b", "--yes", "update"}, somctl::kServiceError, "another application key"},
        {{"--app-key", "a", "update-setting", "set", "RepeatType=4"}, somctl::kOk, ""},
        {{"--app-key", "a", "authority", "release"}, somctl::kOk, ""},
        {{"exec", "NoClass", "NoMethod"}, somctl::kServiceError, "(0x8000a003)"},
        {{"exec", std::string(1100, 'C'), "M"}, somctl::kUsage, "too long"},
        {{"monitor", "set", "X", "\xff\xe9"}, somctl::kOk, ""},
    };
    for (const auto& [args, code, says] : live) {
        Outcome run = Somctl(args);
        EXPECT_EQ(run.code, code) << ::testing::PrintToString(args);
        EXPECT_NE(run.err.find(says), std::string::npos) << run.err;
    }
    EXPECT_NE(Somctl({"monitor", "get", "X"}).out.find("X = \xff\xe9"), std::string::npos);
    // A socket that this user may not open.
    chmod(root.root().c_str(), 0755);
    const auto denied =
        Shell("setpriv --reuid=65534 --regid=65534 --clear-groups $SOMCTL versions");
    EXPECT_EQ(denied.code, somctl::kUnreachable);
    EXPECT_NE(denied.output.find("permission denied on " + somd.SocketPath()), std::string::npos);
    somd.Stop();
    for (const Args& args :
         {Args{"versions"}, Args{"log", "download"}, Args{"--yes", "update"}, Args{"status"}}) {
        Outcome down = Somctl(args);
        EXPECT_EQ(down.code, somctl::kUnreachable) << args[0];
        EXPECT_NE((down.out + down.err).find("not running (" + somd.SocketPath()),
                  std::string::npos);
    }
    // A service that takes the connection but never answers.
    somd.Start();
    kill(somd.pid(), SIGSTOP);
    root.WriteFile("/opt/velmora/qel/som/socket.conf",
                   "socket=" + somd.SocketPath() + "\ntimeout=1\n");
    Outcome silent = Somctl({"versions"});
    kill(somd.pid(), SIGCONT);
    EXPECT_EQ(silent.code, somctl::kNoReply);
    EXPECT_NE(silent.err.find("did not answer within the time-out of 1 s"), std::string::npos);
    // --socket wins over the socket that socket.conf names.
    root.WriteFile("/opt/velmora/qel/som/socket.conf", "socket=/nonexistent.sock\n");
    EXPECT_EQ(Somctl({"versions"}).code, somctl::kUnreachable);
    EXPECT_EQ(Somctl({"--socket", somd.SocketPath(), "versions"}).code, somctl::kOk);
}

// Every value is checked before anything is sent: each of these is refused
// with exit 2 and an error naming the field (JSON too), and the stored record
// is unchanged. Two somctl processes changing different fields of one record
// at once: both acknowledged changes are kept, round after round.
TEST_F(SomctlTest, InvalidValuesRefusedAndConcurrentChangesNeverLost) {
    const std::string before = Somctl({"--json", "update-setting"}).out;
    const std::pair<Args, const char*> refused[] = {
        {{"update-setting", "set", "IsAutoSetting=ture"}, "IsAutoSetting accepts"},
        {{"update-setting", "set", "Time=25:99"}, "Time accepts"},
        {{"update-setting", "set", "RepeatType=12abc"}, "RepeatType accepts"},
        {{"update-setting", "set", "RepeatType=99999999999"}, "RepeatType accepts"},
        {{"update-setting", "set", "DayOfWeek=Funday"}, "DayOfWeek accepts"},
        {{"update-setting", "set", "NoSuchField=1"}, "NAME one of"},
        {{"update-setting", "bogus"}, "usage"},
        {{"download-setting", "set", "ProxyPort=http"}, "ProxyPort accepts"},
        {{"priority", "set", "VELMORA_UpdateManager", "UpdatePriority=-5"}, "UpdatePriority"},
        {{"priority", "set", "VELMORA_UpdateManager"}, "usage"},
        {{"plans", "--bogus"}, "usage"},
        {{"--app-key"}, "--app-key: 1 required KEY missing"},
        {{"--app-key", "team;alice", "authority", "take"}, "--app-key: accepts"},
        {{"--app-key", "\xff", "authority", "take"}, "--app-key: accepts"},
        {{"--bogus", "status"}, "unknown option"},
        {{"name", "8086:1533"}, "DEVICE-ID accepts"},
        {{"monitor", "set", "X", "p;q"}, "any bytes but ';'"},
        {{"providers", "tool", "VELMORA_NicProvider"}, "is a device provider"},
        {{"providers", "device", "NoSuch"}, "no device provider class 'NoSuch'"},
    };
    for (const auto& [args, says] : refused) {
        Outcome run = Somctl(args);
        EXPECT_EQ(run.code, somctl::kUsage) << says;
        EXPECT_NE(run.err.find(says), std::string::npos) << run.err;
        EXPECT_FALSE(Json(args)["ok"].get<bool>()) << says;
    }
    EXPECT_EQ(Somctl({"--json", "update-setting"}).out, before);
    for (const Args& args : {Args{}, Args{"bogus\xff"}, Args{"--help"}, Args{"--version"}})
        EXPECT_NO_THROW(Json(args)) << ::testing::PrintToString(args);

    for (int round = 0; round < 4; ++round) {
        const std::string user = "user" + std::to_string(round), path = "/cache" + user;
        ASSERT_EQ(Shell("$SOMCTL download-setting set ProxyUser=" + user + " & a=$!; " +
                        "$SOMCTL download-setting set CacheServerPath=" + path + "; " +
                        "b=$?; wait $a && exit $b")
                      .code,
                  0);
        const nlohmann::json setting = Json({"download-setting"})["setting"];
        EXPECT_EQ(setting["ProxyUser"], user);
        EXPECT_EQ(setting["CacheServerPath"], path);
    }
}

}  // namespace
