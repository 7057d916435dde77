// Device and tool services from a realistic MOF file; live devices.
#include <gtest/gtest.h>

#include "CSomIf.h"
#include "support/temp_sysroot.h"
#include "support/test_data.h"
#include "support/trace_recorder.h"

namespace {

const char kMof[] = "/opt/velmora/qel/etc/qelvelmora.mof";
const char kInventory[] = "/opt/velmora/qel/etc/devices.tmp";

class ServiceDiscoveryTest : public ::testing::Test {
  protected:
    qel_test::TempSysroot root;
    CSomIf som{"disc"};
};

TEST_F(ServiceDiscoveryTest, ServicesByKindAndFlagsAndLiveDevices) {
    strpairvect_t services{{"earlier", "X"}};
    EXPECT_EQ(som.GetDeviceService(services), 0);  // no MOF file: nothing added
    EXPECT_EQ(services.size(), 1u);
    root.WriteFile(kMof, qel_test::TestData("providers.mof"));
    qel_test::TraceRecorder traces;
    EXPECT_EQ(som.GetDeviceService(services), 0);
    EXPECT_EQ(som.GetToolService(services), 0);
    EXPECT_EQ(services, (strpairvect_t{{"earlier", "X"},
                                       {"NicService", "VELMORA_NicProvider"},
                                       {"GpuService", "VELMORA_GpuProvider"},
                                       {"ToolService", "VELMORA_ToolProvider"}}));
    EXPECT_TRUE(
        traces.Contains("HRESULT CSomIf::GetDeviceService(strpairvect_t&) add "
                        "VELMORA_NicProvider : NicService to list"));
    EXPECT_TRUE(traces.Contains("[LEAVE] HRESULT CSomIf::GetDeviceService(strpairvect_t&), rc=3"));
    // A device provider is alive when the inventory holds one of its sections.
    root.WriteFile("/opt/velmora/qel/provider/nic.ini",
                   "; NIC\n[8086-10D3]\n[14E4-1657]\nDriver=tg3\n");
    CMofContents provider;
    provider.ClassName = "VELMORA_NicProvider";
    provider.ProviderFile = "nic.ini";
    // 17 characters are compared, 16 never.
    const std::pair<const char*, bool> cases[] = {
        {"PCIROOT-8086-10d3-0000\n", true},  {"pciroot-14e4-1657-01 Bmc\n", true},
        {"ABCDEFGH8086-10D3\n", true},       {"ABCDEFG8086-10D3\n", false},
        {"PCIROOT-8086-10FB-0000\n", false}, {"", false}};
    for (const auto& c : cases) {
        root.WriteFile(kInventory, c.first);
        EXPECT_EQ(som.isDeviceAlive(provider), c.second) << c.first;
    }
    provider.ProviderFile = "missing.ini";
    root.WriteFile(kInventory, "PCIROOT-8086-10d3-0000\n");
    traces.Clear();
    EXPECT_FALSE(som.isDeviceAlive(provider));
    EXPECT_EQ(traces.Texts().front(),
              "[ENTER] bool CSomIf::isDeviceAlive(CMofContents) VELMORA_NicProvider");
    EXPECT_EQ(traces.Texts().back(), "[LEAVE] bool CSomIf::isDeviceAlive(CMofContents), rc=0");
}

}  // namespace
