// Device inventory and naming, on small databases and on the real pci.ids.
#include <gtest/gtest.h>

#include <unistd.h>

#include <fstream>

#include "CSomIf.h"
#include "support/temp_sysroot.h"
#include "support/trace_recorder.h"

namespace {

using qel_test::TempSysroot;

const char kDatabase[] = "/usr/share/hwdata/pci.ids";
const char kInventory[] = "/opt/velmora/qel/etc/devices.tmp";

const char kSmallDatabase[] =
    "# test database\n"
    "#\n"
    "1234  Other Vendor\n"
    "\t10d3  Not this one\n"
    "8086  Intel Corporation\n"
    "\t1000  82542 Gigabit Ethernet Controller (Fiber)\n"
    "# a comment inside the vendor block\n"
    "\t10d3  82574L Gigabit Network Connection\n"
    "\t\t8086 0001  a subsystem line\n"
    "\t\t10d4 0001  only a subsystem\n"
    "\t10d5  No line end";

class DeviceNamingTest : public ::testing::Test {
protected:
    TempSysroot root;
    CSomIf som{"naming"};

    CVelmora_DeviceInfo Named(const std::string& id) {
        CVelmora_DeviceInfo device;
        device.VendorName = "Provider Vendor";
        device.DeviceId = id;
        device.DeviceName = "old name";
        device.DeviceVendorName = "old vendor";
        som.GetDeviceName(device);
        return device;
    }
};

TEST_F(DeviceNamingTest, SmallDatabase) {
    root.WriteFile(kDatabase, kSmallDatabase);
    struct Case {
        const char* id;
        const char* name;
        const char* vendor;
    };
    const Case cases[] = {
        {"PCIROOT-8086-10D3-00", "82574L Gigabit Network Connection", "Intel Corporation"},
        {"PCIROOT-8086-10d3", "82574L Gigabit Network Connection", "Intel Corporation"},
        {"PCIROOT-8086-10D4-00", "old name", "Intel Corporation"},  // subsystem only
        {"PCIROOT-8086-10D5-00", "No line end", "Intel Corporation"},
        {"PCIROOT-abcd-10D3-00", "old name", "old vendor"},          // unknown vendor
        {"Bmc", "BMC", "Provider Vendor"},
        {"SYSTEM", "BIOS/EFI", "Provider Vendor"},
        {"PCI-8086", "old name", "old vendor"},                      // too short to look up
        {"-", "old name", "old vendor"},
    };
    for (const Case& c : cases) {
        CVelmora_DeviceInfo device = Named(c.id);
        EXPECT_EQ(device.DeviceName, c.name) << c.id;
        EXPECT_EQ(device.DeviceVendorName, c.vendor) << c.id;
    }
}

TEST_F(DeviceNamingTest, RealPciIdsDatabase) {
    qel_test::MakeDirectories(root.Path("/usr/share/hwdata"));
    ASSERT_EQ(symlink("/usr/share/hwdata/pci.ids", root.Path(kDatabase).c_str()), 0);
    struct Case {
        const char* id;
        const char* name;
        const char* vendor;
    };
    const Case cases[] = {
        {"PCIROOT-8086-10FB-0000", "82599ES 10-Gigabit SFI/SFP+ Network Connection",
         "Intel Corporation"},
        {"PCIROOT-14E4-1657-0001", "NetXtreme BCM5719 Gigabit Ethernet PCIe",
         "Broadcom Inc. and subsidiaries"},
        {"PCIROOT-10DE-1EB8-0002", "TU104GL [Tesla T4]", "NVIDIA Corporation"},
    };
    for (const Case& c : cases) {
        CVelmora_DeviceInfo device = Named(c.id);
        EXPECT_EQ(device.DeviceName, c.name) << c.id;
        EXPECT_EQ(device.DeviceVendorName, c.vendor) << c.id;
    }
}

TEST_F(DeviceNamingTest, MissingDatabaseLeavesTheRecordAndTraces) {
    qel_test::TraceRecorder traces;
    CVelmora_DeviceInfo device = Named("PCIROOT-8086-10D3-00");
    EXPECT_EQ(device.DeviceName, "old name");
    EXPECT_TRUE(traces.Contains("[ENTER] void CSomIf::GetDeviceName(CVelmora_DeviceInfo&) "
                                "PCIROOT-8086-10D3-00"));
    EXPECT_TRUE(traces.Contains("void CSomIf::GetDeviceName(CVelmora_DeviceInfo&) " +
                                root.Path(kDatabase) + " file open failed (2)"));
}

TEST_F(DeviceNamingTest, VendorNamesAndDeviceLines) {
    EXPECT_EQ(som.GetVendorName("8086  Intel Corporation\n"), "Intel Corporation");
    EXPECT_EQ(som.GetVendorName("8086  Intel"), "Intel");
    EXPECT_EQ(som.GetVendorName("8086"), "8086");
    EXPECT_EQ(som.GetVendorName("8086 "), "");
    root.WriteFile("/db", "\t1000  First\n\t\t1001 0000  sub\n# c\n\t1001  Second\n8087  Next\n");
    FILE* file = std::fopen(root.Path("/db").c_str(), "r");
    ASSERT_NE(file, nullptr);
    char* line = nullptr;
    size_t capacity = 0;
    EXPECT_TRUE(som.FindDeviceId("1001", file, line, &capacity));
    EXPECT_STREQ(line, "Second");
    EXPECT_FALSE(som.FindDeviceId("1002", file, line, &capacity));  // next vendor ends it
    std::free(line);
    std::fclose(file);
}

TEST_F(DeviceNamingTest, Inventory) {
    std::list<std::string> devices{"earlier"};
    qel_test::TraceRecorder traces;
    EXPECT_FALSE(som.readDeviceInfo(devices));
    EXPECT_EQ(devices.size(), 1u);
    EXPECT_EQ(traces.Lines().back().level, 2);
    EXPECT_NE(traces.Lines().back().text.find(" file (" + root.Path(kInventory) + ") not found"),
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

#include "discovery/device_namer.h"

namespace {

// Naming many devices over one indexed database gives what one lookup at a
// time gives, traces included, on the real database and on tricky ones.
TEST_F(DeviceNamingTest, BatchNamingMatchesSingleLookups) {
    qel_test::MakeDirectories(root.Path("/usr/share/hwdata"));
    ASSERT_EQ(symlink("/usr/share/hwdata/pci.ids", root.Path(kDatabase).c_str()), 0);
    std::vector<std::string> ids = {"PCIROOT-8086-10FB-0000", "PCIROOT-8086-FFFF-0000",
                                    "PCIROOT-ffff-10FB-0000", "Bmc", "PCI-1", "x-y",
                                    "PCIROOT-10DE-1EB8-0002", "PCIROOT-14e4-1657-0001"};
    std::ifstream db("/usr/share/hwdata/pci.ids");
    std::string line, vendor;
    for (int n = 0; std::getline(db, line) && ids.size() < 120; ++n) {
        if (line.size() > 6 && line[0] != '\t' && line[0] != '#') vendor = line.substr(0, 4);
        if (n % 37 == 0 && line.size() > 6 && line[0] == '\t' && line[1] != '\t') {
            ids.push_back("PCIROOT-" + vendor + "-" + line.substr(1, 4) + "-00");
        }
    }
    for (const char* database : {"real", kSmallDatabase}) {
        if (std::string(database) != "real") {
            root.RemoveFile(kDatabase);
            root.WriteFile(kDatabase, database);
        }
        qel_test::TraceRecorder single;
        std::vector<CVelmora_DeviceInfo> one;
        for (const std::string& id : ids) one.push_back(Named(id));
        const std::vector<std::string> singleTraces = single.Texts();
        single.Clear();
        qel::discovery::DeviceNamer namer("naming", /*batch=*/true);
        for (std::size_t i = 0; i < ids.size(); ++i) {
            CVelmora_DeviceInfo device;
            device.VendorName = "Provider Vendor";
            device.DeviceId = ids[i];
            device.DeviceName = "old name";
            device.DeviceVendorName = "old vendor";
            namer.Name(device);
            ASSERT_EQ(device.DeviceName, one[i].DeviceName) << ids[i];
            ASSERT_EQ(device.DeviceVendorName, one[i].DeviceVendorName) << ids[i];
        }
        EXPECT_EQ(single.Texts(), singleTraces);
    }
}

}  // namespace
