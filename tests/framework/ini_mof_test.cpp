// The INI and MOF readers, plus the string and path helpers.
#include <gtest/gtest.h>

#include <list>

#include "CFileUtility.h"
#include "CIniFileReader.h"
#include "CMofReader.h"
#include "CStringUtil.h"
#include "support/temp_sysroot.h"

namespace {

TEST(IniFileReaderTest, SectionsKeysCommentsAndEmptySections) {
    qel_test::TempSysroot root;
    root.WriteFile("/p.ini",
                   "; leading comment\n"
                   "# another comment\n"
                   "[icon]\n"
                   "  status = download  \n"
                   "type=rollback ; inline\n"
                   "[  8086-10FB  ]\n"
                   "[14E4-1657]\n"
                   "key=value\n"
                   "[icon]\n"
                   "extra=1\n");
    CIniFileReader reader(root.Path("/p.ini"));
    std::string value;
    EXPECT_TRUE(reader.find_section("icon", "status", value));
    EXPECT_EQ(value, "download");
    EXPECT_TRUE(reader.find_section("icon", "type", value));
    EXPECT_EQ(value, "rollback");
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
}

TEST(IniFileReaderTest, MissingFileHasNoSections) {
    CIniFileReader reader("/nonexistent/dir/file.ini");
    std::list<std::string> sections;
    reader.list_section(sections);
    EXPECT_TRUE(sections.empty());
    std::string value;
    EXPECT_FALSE(reader.find_section("a", "b", value));
}

const char kRealisticMof[] = R"MOF(
// Provider registrations of the suite.
#pragma namespace("\\\\.\\root\\velmora")
#pragma include ("base.mof")

/* a qualifier declaration and a class, both skipped */
Qualifier Description : string = null, Scope(any), Flavor(Translatable);

[Description("Registration of one provider service"), Version("1.0")]
class Velmora_ServiceRegistration : Velmora_Base
{
    [key] string Name;
    string Description = "default; with } brace";
    uint32 Kind;
    uint8 Flags;
    string Methods[];
};

instance of Velmora_ServiceRegistration
{
    Name = "NicService";
    Description = "Network " "adapters\t\"fast\"";
    ClassName = "VELMORA_NicProvider";
    ProviderFile = "nic.ini";
    Kind = 1;
    Flags = 0x81;
    Methods = { "GetProviderManageInfo", "ExecuteUpdate" };
};

[Locale(1033)]
instance of Velmora_ServiceRegistration as $Tool
{
    [Key] name = "ToolService";
    CLASSNAME = "VELMORA_ToolProvider";
    providerfile = "tool.ini";
    kind = 2;
    flags = 101b;
    Unknown = { 1, 2 };
    Methods = {};
};

instance of Other_Class { Name = "Octal"; Flags = 017; Kind = -1; Description = "\x41\X263a"; };
)MOF";

TEST(MofReaderTest, ReadsRealisticMofText) {
    qel_test::TempSysroot root;
    root.WriteFile("/q.mof", kRealisticMof);
    CMofReader reader(root.Path("/q.mof"));
    reader.ParseContents();
    std::vector<CMofContents> contents;
    reader.GetMofContents(contents);
    ASSERT_EQ(contents.size(), 3u);
    EXPECT_EQ(contents[0].Name, "NicService");
    EXPECT_EQ(contents[0].Description, "Network adapters\t\"fast\"");
    EXPECT_EQ(contents[0].ClassName, "VELMORA_NicProvider");
    EXPECT_EQ(contents[0].ProviderFile, "nic.ini");
    EXPECT_EQ(contents[0].Kind, 1);
    EXPECT_EQ(contents[0].Flags, 0x81);
    EXPECT_EQ(contents[0].Methods,
              (std::vector<std::string>{"GetProviderManageInfo", "ExecuteUpdate"}));
    EXPECT_EQ(contents[1].Name, "ToolService");
    EXPECT_EQ(contents[1].ClassName, "VELMORA_ToolProvider");
    EXPECT_EQ(contents[1].Kind, 2);
    EXPECT_EQ(contents[1].Flags, 5);
    EXPECT_TRUE(contents[1].Methods.empty());
    EXPECT_EQ(contents[2].Flags, 017);
    EXPECT_EQ(contents[2].Kind, -1);
    EXPECT_EQ(contents[2].Description, "A\xE2\x98\xBA");
}

TEST(MofReaderTest, SyntaxErrorKeepsTheInstancesReadSoFar) {
    const std::string good = "instance of A { Name = \"one\"; };\n";
    const std::string cases[] = {
        good + "instance of B { Name = ; };",
        good + "instance of B { Name = \"unterminated; };",
        good + "instance B { };",
        good + "@@@",
        good + "instance of B { Name = \"x\" ",
        good + "/* never closed",
    };
    for (const std::string& text : cases) {
        std::vector<CMofContents> contents = CMofReader::ParseText(text);
        ASSERT_EQ(contents.size(), 1u) << text;
        EXPECT_EQ(contents[0].Name, "one");
    }
    // Every prefix of a realistic file parses without harm.
    const std::string full(kRealisticMof);
    for (std::size_t cut = 0; cut <= full.size(); ++cut) {
        EXPECT_LE(CMofReader::ParseText(full.substr(0, cut)).size(), 3u);
    }
}

TEST(MofReaderTest, MissingFileGivesNothing) {
    CMofReader reader("/nonexistent.mof");
    reader.ParseContents();
    std::vector<CMofContents> contents;
    reader.GetMofContents(contents);
    EXPECT_TRUE(contents.empty());
}

TEST(StringUtilTest, CaseAndReplace) {
    EXPECT_EQ(CStringUtil::StringToUpperCase("ab-9f"), "AB-9F");
    EXPECT_EQ(CStringUtil::StringToLowerCase("AB-9F"), "ab-9f");
    EXPECT_EQ(CStringUtil::ReplaceAll("a%!@b%!@", "%!@", ";"), "a;b;");
    EXPECT_EQ(CStringUtil::ReplaceAll("aaa", "aa", "a"), "aa");
    EXPECT_EQ(CStringUtil::ReplaceAll("abc", "", "x"), "abc");
}

TEST(FileUtilityTest, SystemPathFollowsQelSysroot) {
    unsetenv("QEL_SYSROOT");
    EXPECT_EQ(CFileUtility::SystemPath("/usr/share/hwdata/pci.ids"), "/usr/share/hwdata/pci.ids");
    EXPECT_EQ(CFileUtility::GetInstallPath(2), "/opt/velmora/qel");
    setenv("QEL_SYSROOT", "", 1);
    EXPECT_EQ(CFileUtility::SystemPath("/x"), "/x");
    {
        qel_test::TempSysroot root;
        EXPECT_EQ(CFileUtility::SystemPath("/x"), root.root() + "/x");
        EXPECT_EQ(CFileUtility::GetInstallPath(0), root.root() + "/opt/velmora/qel");
    }
    unsetenv("QEL_SYSROOT");
}

}  // namespace
