// The INI and MOF readers, plus the string and path helpers.
#include <gtest/gtest.h>

#include <list>

#include "CFileUtility.h"
#include "CIniFileReader.h"
#include "CMofReader.h"
#include "CStringUtil.h"
#include "support/temp_sysroot.h"
#include "support/test_data.h"

namespace {

TEST(IniFileReaderTest, SectionsKeysCommentsEmptySectionsAndMissingFiles) {
    qel_test::TempSysroot root;
    root.WriteFile("/p.ini",
                   "; comment\n# comment\n[icon]\n  status = download  \ntype=rollback ; inline\n"
                   "[  8086-10FB  ]\n[14E4-1657]\nkey=value\n[icon]\nextra=1\n[]\n");
    CIniFileReader reader(root.Path("/p.ini"));
    std::string value, type, extra;
    EXPECT_TRUE(reader.find_section("icon", "status", value) && value == "download");
    EXPECT_TRUE(reader.find_section("icon", "type", type) && type == "rollback");
    EXPECT_TRUE(reader.find_section("icon", "extra", extra) && extra == "1");
    EXPECT_FALSE(reader.find_section("icon", "missing", value));
    EXPECT_FALSE(reader.find_section("none", "status", value));
    EXPECT_EQ(value, "download");
    std::list<std::string> sections{"before"};
    reader.list_section(sections);
    EXPECT_EQ(sections, (std::list<std::string>{"before", "icon", "8086-10FB", "14E4-1657", ""}));
    reader.close();
    EXPECT_FALSE(reader.find_section("icon", "status", value));
    sections.clear();
    CIniFileReader("/nonexistent/file.ini").list_section(sections);
    EXPECT_TRUE(sections.empty());
}

// Every field of every instance, one row each.
std::vector<std::string> Rows(const std::vector<CMofContents>& contents) {
    std::vector<std::string> rows;
    for (const CMofContents& c : contents) {
        std::string row = c.Name + "|" + c.Description + "|" + c.ClassName + "|" + c.ProviderFile +
                          "|" + std::to_string(c.Kind) + "|" + std::to_string(c.Flags);
        for (const std::string& method : c.Methods)
            row += "|" + method;
        rows.push_back(row);
    }
    return rows;
}

TEST(MofReaderTest, RealisticFilesAndSyntaxErrors) {
    EXPECT_EQ(Rows(CMofReader::ParseText(qel_test::TestData("providers.mof"))),
              (std::vector<std::string>{
                  "NicService|Network adapters\t\"fast\"|VELMORA_NicProvider|nic.ini|1|128|"
                  "GetProviderManageInfo|ExecuteUpdate",
                  "ToolService||VELMORA_ToolProvider|tool.ini|2|3",  // names ignore case; binary
                  "RaidService||VELMORA_RaidProvider||1|2",
                  "Octal|A\xE2\x98\xBA|X||3|15",  // octal; \x escapes as UTF-8
                  "GpuService||VELMORA_GpuProvider||1|1"}));
    // \x takes one to four hex digits of either case.
    EXPECT_EQ(Rows(CMofReader::ParseText(qel_test::TestData("escapes.mof"))),
              (std::vector<std::string>{
                  "SerialService|Ports COM1\tCOM2\r\n\f|VELMORA_SerialProvider|serial.ini|1|16|"
                  "GetProviderManageInfo",
                  "Sensor\xC2\xB0Service|Temperature in \xC2\xB0"
                  "C, delete key \x7F\x7F, \xC2\xAB"
                  "J\xE2\x98\xBA"
                  "A1\x04g|VELMORA_SensorProvider|sensor.ini|2|12"}));
    std::vector<CMofContents> got(1);
    CMofReader missing("/nonexistent.mof");
    missing.ParseContents();
    missing.GetMofContents(got);
    EXPECT_EQ(got.size(), 1u);
    // Syntax errors keep the instances read so far.
    const std::string good = "instance of A { Name = \"one\"; };\n";
    for (const char* bad :
         {"instance of B { Name = ; };", "instance of B { Name = \"open; };", "instance B { };",
          "@@@", "instance of B { Name = \"x\" ", "/* never closed"}) {
        std::vector<CMofContents> contents = CMofReader::ParseText(good + bad);
        ASSERT_EQ(contents.size(), 1u) << bad;
        EXPECT_EQ(contents[0].Name, "one");
    }
}

TEST(HelpersTest, ReplaceAllAndSystemPaths) {
    EXPECT_EQ(CStringUtil::ReplaceAll("a%!@b%!@", "%!@", ";"), "a;b;");
    EXPECT_EQ(CStringUtil::ReplaceAll("aaa", "aa", "a"), "aa");
    EXPECT_EQ(CStringUtil::ReplaceAll("abc", "", "x"), "abc");
    unsetenv("QEL_SYSROOT");  // what production runs with
    EXPECT_EQ(CFileUtility::SystemPath("/usr/share/hwdata/pci.ids"), "/usr/share/hwdata/pci.ids");
    EXPECT_EQ(CFileUtility::GetInstallPath(2), "/opt/velmora/qel");
    setenv("QEL_SYSROOT", "", 1);
    EXPECT_EQ(CFileUtility::SystemPath("/x"), "/x");
}

}  // namespace
