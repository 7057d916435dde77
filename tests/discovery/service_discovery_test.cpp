// Device and tool services from a realistic MOF file; live devices.
#include <gtest/gtest.h>

#include "CSomIf.h"
#include "support/temp_sysroot.h"
#include "support/trace_recorder.h"

namespace {

const char kMof[] = R"MOF(// Providers of the suite
#pragma namespace ("\\\\.\\root\\velmora")

[Abstract]
class Velmora_ServiceRegistration
{
    string Name;
    string ClassName;
    uint32 Kind;
    uint8 Flags;
};

instance of Velmora_ServiceRegistration
{
    Name = "NicService";
    Description = "Network adapters";
    ClassName = "VELMORA_NicProvider";
    ProviderFile = "nic.ini";
    Kind = 1;
    Flags = 0x80;
};

instance of Velmora_ServiceRegistration
{
    Name = "RaidService"; ClassName = "VELMORA_RaidProvider"; Kind = 1; Flags = 0x02;
};

/* a tool service */
instance of Velmora_ServiceRegistration
{
    Name = "UpdateTool";
    ClassName = "VELMORA_UpdateTool";
    Kind = 2;
    Flags = 0x03;
};

instance of Velmora_ServiceRegistration
{
    Name = "Other"; ClassName = "VELMORA_Other"; Kind = 3; Flags = 0xFF;
};

instance of Velmora_ServiceRegistration
{
    Name = "GpuService"; ClassName = "VELMORA_GpuProvider"; Kind = 1; Flags = 1;
};
)MOF";

class ServiceDiscoveryTest : public ::testing::Test {
protected:
    qel_test::TempSysroot root;
    CSomIf som{"disc"};
    void SetUp() override { root.WriteFile("/opt/velmora/qel/etc/qelvelmora.mof", kMof); }
};

TEST_F(ServiceDiscoveryTest, DeviceAndToolServicesByKindAndFlags) {
    qel_test::TraceRecorder traces;
    strpairvect_t services{{"earlier", "X"}};
    EXPECT_EQ(som.GetDeviceService(services), 0);
    EXPECT_EQ(services, (strpairvect_t{{"earlier", "X"},
                                       {"NicService", "VELMORA_NicProvider"},
                                       {"GpuService", "VELMORA_GpuProvider"}}));
    EXPECT_TRUE(traces.Contains(
        "HRESULT CSomIf::GetDeviceService(strpairvect_t&) add VELMORA_NicProvider : NicService "
        "to list"));
    EXPECT_TRUE(traces.Contains("[LEAVE] HRESULT CSomIf::GetDeviceService(strpairvect_t&), rc=3"));
    EXPECT_EQ(som.GetToolService(services), 0);
    EXPECT_EQ(services.back(), (std::pair<std::string, std::string>{"UpdateTool",
                                                                    "VELMORA_UpdateTool"}));
    EXPECT_EQ(services.size(), 4u);
}

TEST_F(ServiceDiscoveryTest, MissingMofGivesNothing) {
    root.RemoveFile("/opt/velmora/qel/etc/qelvelmora.mof");
    strpairvect_t services;
    EXPECT_EQ(som.GetDeviceService(services), 0);
    EXPECT_EQ(som.GetToolService(services), 0);
    EXPECT_TRUE(services.empty());
}

TEST_F(ServiceDiscoveryTest, DeviceAlive) {
    root.WriteFile("/opt/velmora/qel/provider/nic.ini",
                   "; devices served by the NIC provider\n[8086-10D3]\n[14E4-1657]\nDriver=tg3\n");
    CMofContents provider;
    provider.ClassName = "VELMORA_NicProvider";
    provider.ProviderFile = "nic.ini";
    struct Case {
        const char* inventory;  // null: no inventory file
        bool alive;
    };
    const Case cases[] = {
        {"PCIROOT-8086-10d3-0000\n", true},
        {"pciroot-14e4-1657-01 Bmc\n", true},
        {"ABCDEFGH8086-10D3\n", true},   // 17 characters
        {"ABCDEFG8086-10D3\n", false},   // 16 characters: never compared
        {"PCIROOT-8086-10FB-0000\n", false},
        {"", false},
        {nullptr, false},
    };
    for (const Case& c : cases) {
        if (c.inventory != nullptr) {
            root.WriteFile("/opt/velmora/qel/etc/devices.tmp", c.inventory);
        } else {
            root.RemoveFile("/opt/velmora/qel/etc/devices.tmp");
        }
        EXPECT_EQ(som.isDeviceAlive(provider), c.alive) << (c.inventory ? c.inventory : "none");
    }
    provider.ProviderFile = "missing.ini";
    root.WriteFile("/opt/velmora/qel/etc/devices.tmp", "PCIROOT-8086-10d3-0000\n");
    qel_test::TraceRecorder traces;
    EXPECT_FALSE(som.isDeviceAlive(provider));
    EXPECT_TRUE(traces.Contains("[ENTER] bool CSomIf::isDeviceAlive(CMofContents) "
                                "VELMORA_NicProvider"));
    EXPECT_TRUE(traces.Contains("[LEAVE] bool CSomIf::isDeviceAlive(CMofContents), rc=0"));
}

}  // namespace
