// Device inventory and naming, on small databases and on the real pci.ids.
#include <gtest/gtest.h>

#include <unistd.h>

#include <fstream>

#include "CSomIf.h"
#include "discovery/device_namer.h"
#include "support/temp_sysroot.h"
#include "support/test_data.h"
#include "support/trace_recorder.h"

namespace {

const char kDatabase[] = "/usr/share/hwdata/pci.ids";
const char kInventory[] = "/opt/velmora/qel/etc/devices.tmp";

class DeviceNamingTest : public ::testing::Test {
  protected:
    qel_test::TempSysroot root;
    CSomIf som{"naming"};

    static CVelmora_DeviceInfo Device(const std::string& id) {
        CVelmora_DeviceInfo device;
        device.VendorName = "Provider Vendor";
        device.DeviceId = id;
        device.DeviceName = "old name";
        device.DeviceVendorName = "old vendor";
        return device;
    }
    // "vendor | name" after GetDeviceName.
    std::string Named(const std::string& id) {
        CVelmora_DeviceInfo device = Device(id);
        som.GetDeviceName(device);
        return device.DeviceVendorName + " | " + device.DeviceName;
    }
    void UseRealDatabase() {
        qel_test::MakeDirectories(root.Path("/usr/share/hwdata"));
        ASSERT_EQ(symlink("/usr/share/hwdata/pci.ids", root.Path(kDatabase).c_str()), 0);
    }
};

TEST_F(DeviceNamingTest, SmallDatabaseRules) {
    root.WriteFile(kDatabase, qel_test::TestData("small-pci.ids"));
    const std::pair<const char*, const char*> cases[] = {
        {"PCIROOT-8086-10D3-00", "Intel Corporation | 82574L Gigabit Network Connection"},
        {"PCIROOT-8086-10d3", "Intel Corporation | 82574L Gigabit Network Connection"},
        {"PCIROOT-8086-10D4-00", "Intel Corporation | old name"},  // only a subsystem
        {"PCIROOT-8086-10D5-00", "Intel Corporation | No line end"},
        {"PCIROOT-abcd-10D3-00", "old vendor | old name"},  // unknown vendor
        {"Bmc", "Provider Vendor | BMC"},
        {"SYSTEM", "Provider Vendor | BIOS/EFI"},
        {"PCI-8086", "old vendor | old name"},  // too short to look up
        {"-", "old vendor | old name"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Named(c.first), c.second) << c.first;
    EXPECT_EQ(som.GetVendorName("8086  Intel Corporation\n"), "Intel Corporation");
    EXPECT_EQ(som.GetVendorName("8086"), "8086");
    EXPECT_EQ(som.GetVendorName("8086 "), "");
    root.WriteFile("/db", "\t1000  First\n\t\t1001 0000  sub\n# c\n\t1001  Second\n8087  Next\n");
    FILE* file = std::fopen(root.Path("/db").c_str(), "r");
    char* line = nullptr;
    size_t capacity = 0;
    EXPECT_TRUE(som.FindDeviceId("1001", file, line, &capacity));
    EXPECT_STREQ(line, "Second");
    EXPECT_FALSE(som.FindDeviceId("1002", file, line, &capacity));  // the next vendor ends it
    std::free(line);
    std::fclose(file);
}

TEST_F(DeviceNamingTest, RealDatabaseAndMissingDatabase) {
    qel_test::TraceRecorder traces;
    EXPECT_EQ(Named("PCIROOT-8086-10D3-00"), "old vendor | old name");
    EXPECT_TRUE(traces.Contains(
        "[ENTER] void CSomIf::GetDeviceName(CVelmora_DeviceInfo&) PCIROOT-8086-10D3-00"));
    EXPECT_TRUE(traces.Contains("void CSomIf::GetDeviceName(CVelmora_DeviceInfo&) " +
                                root.Path(kDatabase) + " file open failed (2)"));
    UseRealDatabase();
    EXPECT_EQ(Named("PCIROOT-8086-10FB-0000"),
              "Intel Corporation | 82599ES 10-Gigabit SFI/SFP+ Network Connection");
    EXPECT_EQ(Named("PCIROOT-14E4-1657-0001"),
              "Broadcom Inc. and subsidiaries | NetXtreme BCM5719 Gigabit Ethernet PCIe");
    EXPECT_EQ(Named("PCIROOT-10DE-1EB8-0002"), "NVIDIA Corporation | TU104GL [Tesla T4]");
}

// Naming many devices over one indexed database gives what one lookup at a
// time gives, traces included, on the real database and on a tricky one.
TEST_F(DeviceNamingTest, BatchNamingMatchesSingleLookups) {
    UseRealDatabase();
    std::vector<std::string> ids = {
        "PCIROOT-8086-FFFF-0000", "PCIROOT-ffff-10FB-0000", "Bmc", "PCI-1",
        "PCIROOT-8086-10d3-00",   "PCIROOT-8086-10D4-00"};
    std::ifstream db("/usr/share/hwdata/pci.ids");
    std::string line, vendor;
    for (int n = 0; std::getline(db, line) && ids.size() < 120; ++n) {
        if (line.size() > 6 && line[0] != '\t' && line[0] != '#')
            vendor = line.substr(0, 4);
        if (n % 37 == 0 && line.size() > 6 && line[0] == '\t' && line[1] != '\t') {
            ids.push_back("PCIROOT-" + vendor + "-" + line.substr(1, 4) + "-00");
        }
    }
    for (bool real : {true, false}) {
        if (!real) {
            root.RemoveFile(kDatabase);
            root.WriteFile(kDatabase, qel_test::TestData("small-pci.ids"));
        }
        qel_test::TraceRecorder traces;
        std::vector<std::string> single;
        for (const std::string& id : ids)
            single.push_back(Named(id));
        const std::vector<std::string> singleTraces = traces.Texts();
        traces.Clear();
        qel::discovery::DeviceNamer namer("naming", /*batch=*/true);
        for (std::size_t i = 0; i < ids.size(); ++i) {
            CVelmora_DeviceInfo device = Device(ids[i]);
            namer.Name(device);
            ASSERT_EQ(device.DeviceVendorName + " | " + device.DeviceName, single[i]) << ids[i];
        }
        EXPECT_EQ(traces.Texts(), singleTraces);
    }
}

TEST_F(DeviceNamingTest, Inventory) {
    std::list<std::string> devices{"earlier"};
    qel_test::TraceRecorder traces;
    EXPECT_FALSE(som.readDeviceInfo(devices));
    EXPECT_EQ(devices.size(), 1u);
    EXPECT_EQ(traces.Lines().back().level, 2);
    EXPECT_NE(traces.Texts().back().find(" file (" + root.Path(kInventory) + ") not found"),
              std::string::npos);
    root.WriteFile(kInventory, "PCIROOT-8086-10FB-0000  PCIROOT-14E4-1657-0001\n\tBmc\n\n");
    EXPECT_TRUE(som.readDeviceInfo(devices));
    EXPECT_EQ(devices, (std::list<std::string>{"earlier", "PCIROOT-8086-10FB-0000",
                                               "PCIROOT-14E4-1657-0001", "Bmc"}));
    root.WriteFile(kInventory, "");
    EXPECT_TRUE(som.readDeviceInfo(devices));
    EXPECT_EQ(devices.size(), 4u);
}

}  // namespace
