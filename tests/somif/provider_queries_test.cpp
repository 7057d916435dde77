// Typed provider queries end to end, naming included.
#include <gtest/gtest.h>

#include "CSomIf.h"
#include "provider_info/plain_text.h"
#include "support/fake_som_service.h"
#include "support/sample_providers.h"
#include "support/trace_recorder.h"

namespace {

using qel_test::Action;
using qel_test::FakeSomService;

class ProviderQueriesTest : public ::testing::Test {
  protected:
    qel_test::TempSysroot root;
    FakeSomService service{root, 1};
    CSomIf som{"query"};

    void SetUp() override {
        root.WriteFile("/usr/share/hwdata/pci.ids",
                       "8086  Intel Corporation\n\t10fb  82599ES 10-Gigabit SFI/SFP+ Network "
                       "Connection\n14e4  Broadcom Inc. and subsidiaries\n\t1657  NetXtreme "
                       "BCM5719 Gigabit Ethernet PCIe\n");
    }

    static std::string DeviceReply() {
        std::string text;
        qel::pm::WritePlainText(qel_test::SampleDevProvider(), text);
        return text;
    }
};

TEST_F(ProviderQueriesTest, DeviceProviderIsReadAndNamed) {
    service.Push(Action::Answer(DeviceReply()));
    CVelmora_DevProviderManageInfo info;
    info.DeviceInfo.resize(5);  // from an earlier query: replaced
    EXPECT_EQ(som.GetProviderManageInfo("VELMORA_NicProvider", info), 0);
    EXPECT_EQ(service.LastRequest().bytes,
              "00000073cafefeedVELMORA_NicProvider/GetProviderManageInfo0000000000000000");
    ASSERT_EQ(info.DeviceInfo.size(), 3u);
    EXPECT_EQ(info.DeviceInfo[0].DeviceName, "82599ES 10-Gigabit SFI/SFP+ Network Connection");
    EXPECT_EQ(info.DeviceInfo[1].DeviceVendorName, "Broadcom Inc. and subsidiaries");
    EXPECT_EQ(info.DeviceInfo[2].DeviceName, "");  // vendor not in this database
    EXPECT_EQ(info.DeviceInfo[0].ModuleInfo[0].RepositoryInfo.size(), 2u);
}

TEST_F(ProviderQueriesTest, ResultPaths) {
    CVelmora_DevProviderManageInfo info;
    service.Push(Action::Answer(DeviceReply(), 0x80001234u));
    EXPECT_EQ(som.GetProviderManageInfo("C", info), 0x80081101L);
    EXPECT_EQ(info.DeviceInfo.size(), 3u);  // the body is read all the same
    EXPECT_FALSE(info.DeviceInfo[0].DeviceName.empty());

    service.Push(Action::Answer(DeviceReply(), 0x00000004u));
    EXPECT_EQ(som.GetProviderManageInfo("C", info), 4);

    service.Push(Action::Fault(Action::kCloseWithoutAnswer));
    info.ProviderName = "kept";
    EXPECT_EQ(som.GetProviderManageInfo("C", info), 0x80081101L);
    EXPECT_TRUE(info.DeviceInfo.empty());

    qel_test::TraceRecorder traces;
    service.Stop();
    info.DeviceInfo.resize(2);
    EXPECT_EQ(som.GetProviderManageInfo("C", info), 0x80081001L);
    EXPECT_TRUE(info.DeviceInfo.empty());
    EXPECT_EQ(info.ProviderName, "kept");
    EXPECT_TRUE(
        traces.Contains("[ENTER] HRESULT CSomIf::GetProviderManageInfo(std::string, "
                        "CVelmora_DevProviderManageInfo&) C"));
    EXPECT_TRUE(
        traces.Contains("[LEAVE] HRESULT CSomIf::GetProviderManageInfo(std::string, "
                        "CVelmora_DevProviderManageInfo&), rc=-2146955263"));
}

TEST_F(ProviderQueriesTest, ToolProvider) {
    std::string text;
    qel::pm::WritePlainText(qel_test::SampleToolProvider(), text);
    service.Push(Action::Answer(text));
    CVelmora_ToolProviderManageInfo info;
    EXPECT_EQ(som.GetProviderManageInfo("VELMORA_ToolProvider", info), 0);
    ASSERT_EQ(info.ToolInfo.size(), 2u);
    EXPECT_EQ(info.ProviderName, "VelmoraToolProvider");
}

TEST_F(ProviderQueriesTest, ReceiveWithoutARequestGivesMinusOne) {
    qel_test::TraceRecorder traces;
    CVelmora_ToolProviderManageInfo info;
    EXPECT_EQ(som.RecvProviderManageInfo(60, info), -1);
    EXPECT_TRUE(
        traces.Contains("[LEAVE] int CSomIf::RecvProviderManageInfo(size_t, "
                        "CVelmora_ToolProviderManageInfo&), rc=-1"));
}

}  // namespace
