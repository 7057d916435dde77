// somctl against a real somd: golden tables, JSON, secrets and exit codes.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
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
    EXPECT_EQ(Somctl({"status"}).out, "update process: idle\n");
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
    EXPECT_NE(down.err.find("not reachable"), std::string::npos);
    EXPECT_EQ(Somctl({"status"}).code, somctl::kOk);  // a local file: no service needed
}

}  // namespace
