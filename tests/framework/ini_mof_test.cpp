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
                   "[  8086-10FB  ]\n[14E4-1657]\nkey=value\n[icon]\nextra=1\n");
    CIniFileReader reader(root.Path("/p.ini"));
    std::string value;
    EXPECT_TRUE(reader.find_section("icon", "status", value) && value == "download");
    EXPECT_TRUE(reader.find_section("icon", "type", value) && value == "rollback");
    EXPECT_TRUE(reader.find_section("icon", "extra", value));
    value = "untouched";
    EXPECT_FALSE(reader.find_section("icon", "missing", value));
    EXPECT_FALSE(reader.find_section("none", "status", value));
    EXPECT_EQ(value, "untouched");
    std::list<std::string> sections{"before"};
    reader.list_section(sections);
    EXPECT_EQ(sections, (std::list<std::string>{"before", "icon", "8086-10FB", "14E4-1657"}));
    reader.close();
    EXPECT_FALSE(reader.find_section("icon", "status", value));
    CIniFileReader missing("/nonexistent/file.ini");
    sections.clear();
    missing.list_section(sections);
    EXPECT_TRUE(sections.empty());
}

TEST(MofReaderTest, ReadsRealisticMofText) {
    std::vector<CMofContents> got = CMofReader::ParseText(qel_test::TestData("providers.mof"));
    ASSERT_EQ(got.size(), 5u);
    EXPECT_EQ(got[0].Name, "NicService");
    EXPECT_EQ(got[0].Description, "Network adapters\t\"fast\"");
    EXPECT_EQ(got[0].ClassName, "VELMORA_NicProvider");
    EXPECT_EQ(got[0].ProviderFile, "nic.ini");
    EXPECT_EQ(got[0].Kind, 1);
    EXPECT_EQ(got[0].Flags, 0x80);
    EXPECT_EQ(got[0].Methods, (std::vector<std::string>{"GetProviderManageInfo", "ExecuteUpdate"}));
    EXPECT_EQ(got[1].ClassName, "VELMORA_ToolProvider");  // names match ignoring case
    EXPECT_EQ(got[1].Flags, 3);                           // binary
    EXPECT_TRUE(got[1].Methods.empty());
    EXPECT_EQ(got[3].Flags, 017);                    // octal
    EXPECT_EQ(got[3].Description, "A\xE2\x98\xBA");  // \x escapes as UTF-8
    CMofReader missing("/nonexistent.mof");
    missing.ParseContents();
    missing.GetMofContents(got);
    EXPECT_EQ(got.size(), 5u);
}

TEST(MofReaderTest, SyntaxErrorsKeepTheInstancesReadSoFar) {
    const std::string good = "instance of A { Name = \"one\"; };\n";
    for (const char* bad :
         {"instance of B { Name = ; };", "instance of B { Name = \"open; };", "instance B { };",
          "@@@", "instance of B { Name = \"x\" ", "/* never closed"}) {
        std::vector<CMofContents> contents = CMofReader::ParseText(good + bad);
        ASSERT_EQ(contents.size(), 1u) << bad;
        EXPECT_EQ(contents[0].Name, "one");
    }
    const std::string full = qel_test::TestData("providers.mof");
    for (std::size_t cut = 0; cut <= full.size(); ++cut) {
        EXPECT_LE(CMofReader::ParseText(full.substr(0, cut)).size(), 5u);
    }
}

TEST(HelpersTest, StringsAndSystemPaths) {
    EXPECT_EQ(CStringUtil::StringToUpperCase("ab-9f"), "AB-9F");
    EXPECT_EQ(CStringUtil::StringToLowerCase("AB-9F"), "ab-9f");
    EXPECT_EQ(CStringUtil::ReplaceAll("a%!@b%!@", "%!@", ";"), "a;b;");
    EXPECT_EQ(CStringUtil::ReplaceAll("aaa", "aa", "a"), "aa");
    EXPECT_EQ(CStringUtil::ReplaceAll("abc", "", "x"), "abc");
    unsetenv("QEL_SYSROOT");
    EXPECT_EQ(CFileUtility::SystemPath("/usr/share/hwdata/pci.ids"), "/usr/share/hwdata/pci.ids");
    EXPECT_EQ(CFileUtility::GetInstallPath(2), "/opt/velmora/qel");
    setenv("QEL_SYSROOT", "", 1);
    EXPECT_EQ(CFileUtility::SystemPath("/x"), "/x");
    qel_test::TempSysroot root;
    EXPECT_EQ(CFileUtility::GetInstallPath(0), root.root() + "/opt/velmora/qel");
}

}  // namespace
