// Device inventory and naming from the PCI ID database.
#include <gtest/gtest.h>

#include <unistd.h>

#include <fstream>

#include "CSomIf.h"
#include "common/record_json.h"
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

    // "vendor | name" after naming by GetDeviceName or `namer`, from "old vendor | old name".
    std::string Named(const std::string& id, qel::discovery::DeviceNamer* namer = nullptr) {
        CVelmora_DeviceInfo device = nlohmann::json{{"VendorName", "Provider Vendor"},
                                                    {"DeviceId", id},
                                                    {"DeviceName", "old name"},
                                                    {"DeviceVendorName", "old vendor"}};
        namer ? namer->Name(device) : som.GetDeviceName(device);
        return device.DeviceVendorName + " | " + device.DeviceName;
    }
};

TEST_F(DeviceNamingTest, DatabaseRulesAndInventory) {
    qel_test::TraceRecorder traces;
    const std::string sig = "void CSomIf::GetDeviceName(CVelmora_DeviceInfo&) ";
    EXPECT_EQ(Named("PCIROOT-8086-10D3-00"), "old vendor | old name");  // no database
    EXPECT_TRUE(traces.Contains("[ENTER] " + sig + "PCIROOT-8086-10D3-00"));
    EXPECT_TRUE(traces.Contains(sig + root.Path(kDatabase) + " file open failed (2)"));
    root.WriteFile(kDatabase, qel_test::TestData("small-pci.ids"));
    const std::string intel = "Intel Corporation | 82574L Gigabit Network Connection",
                      old = "old vendor | old name";
    // clang-format off
    const std::pair<const char*, std::string> cases[] = {
        {"PCIROOT-8086-10D3-00", intel}, {"PCIROOT-8086-10d3", intel},
        {"PCIROOT-8086-10D4-00", "Intel Corporation | old name"},  // only a subsystem
        {"PCIROOT-8086-10D5-00", "Intel Corporation | No line end"},
        {"PCIROOT-abcd-10D3-00", old}, {"PCI-8086", old}, {"-", old},  // unknown, too short
        {"Bmc", "Provider Vendor | BMC"}, {"SYSTEM", "Provider Vendor | BIOS/EFI"}};
    // clang-format on
    for (const auto& c : cases)
        EXPECT_EQ(Named(c.first), c.second) << c.first;
    EXPECT_EQ(som.GetVendorName("8086  Intel Corporation\n") + "|" + som.GetVendorName("8086") +
                  "|" + som.GetVendorName("8086 "),
              "Intel Corporation|8086|");
    root.WriteFile("/db", "\t1000  First\n\t\t1001 0000  sub\n# c\n\t1001  Second\n8087  Next\n");
    FILE* file = std::fopen(root.Path("/db").c_str(), "r");
    char* line = nullptr;
    size_t capacity = 0;
    EXPECT_TRUE(som.FindDeviceId("1001", file, line, &capacity));
    EXPECT_STREQ(line, "Second");
    EXPECT_FALSE(som.FindDeviceId("1002", file, line, &capacity));  // the next vendor ends it
    std::free(line);
    std::fclose(file);
    // The device inventory: missing, empty, then three devices, all appended.
    std::list<std::string> devices{"earlier"};
    traces.Clear();
    EXPECT_FALSE(som.readDeviceInfo(devices));
    EXPECT_EQ(traces.Lines().back().level, 2);
    EXPECT_NE(traces.Texts().back().find(" file (" + root.Path(kInventory) + ") not found"),
              std::string::npos);
    root.WriteFile(kInventory, "");
    EXPECT_TRUE(som.readDeviceInfo(devices));
    root.WriteFile(kInventory, "PCIROOT-8086-10FB-0000  PCIROOT-14E4-1657-0001\n\tBmc\n\n");
    EXPECT_TRUE(som.readDeviceInfo(devices));
    EXPECT_EQ(devices, (std::list<std::string>{"earlier", "PCIROOT-8086-10FB-0000",
                                               "PCIROOT-14E4-1657-0001", "Bmc"}));
}

// Naming many devices over one indexed database gives what one lookup at a
// time gives, traces included: on the host's database, on a tricky one and
// with none at all.
TEST_F(DeviceNamingTest, BatchNamingMatchesSingleLookups) {
    // clang-format off
    std::vector<std::string> ids = {"PCIROOT-8086-FFFF-0000", "PCIROOT-ffff-10FB-0000", "Bmc",
        "PCI-1", "PCIROOT-8086-10d3-00", "PCIROOT-8086-10D4-00", "PCIROOT-8086-0FFF-00",
        "PCIROOT-8086-1000-00"};
    // clang-format on
    std::ifstream db(kDatabase);
    std::string line, vendor;
    for (int n = 0; std::getline(db, line) && ids.size() < 120; ++n) {
        if (line.size() > 6 && line[0] != '\t' && line[0] != '#')
            vendor = line.substr(0, 4);
        if (n % 37 == 0 && line.size() > 6 && line[0] == '\t' && line[1] != '\t')
            ids.push_back("PCIROOT-" + vendor + "-" + line.substr(1, 4) + "-00");
    }
    qel_test::MakeDirectories(root.Path("/usr/share/hwdata"));
    for (const std::string database : {"host", "small", "none"}) {
        root.RemoveFile(kDatabase);
        if (database == "host") {
            ASSERT_EQ(symlink(kDatabase, root.Path(kDatabase).c_str()), 0);
        }
        if (database == "small")
            root.WriteFile(kDatabase, qel_test::TestData("small-pci.ids"));
        std::vector<std::string> names[2], traceTexts[2];
        for (bool batch : {false, true}) {
            qel_test::TraceRecorder traces;
            qel::discovery::DeviceNamer namer("naming", batch);
            for (const std::string& id : ids)
                names[batch].push_back(Named(id, batch ? &namer : nullptr));
            traceTexts[batch] = traces.Texts();
        }
        EXPECT_EQ(names[1], names[0]) << database;
        EXPECT_EQ(traceTexts[1], traceTexts[0]) << database;
    }
}

}  // namespace
