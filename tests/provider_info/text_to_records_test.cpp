// Reply text into provider records: positional reading and its limits.
#include <gtest/gtest.h>

#include "CProviderManageInfo.h"
#include "provider_info/plain_text.h"
#include "support/sample_providers.h"
#include "support/text_buffer.h"
#include "support/trace_recorder.h"

namespace {

using qel_test::TextBuffer;

template <class Info>
std::string Plain(const Info& info) {
    std::string text;
    qel::pm::WritePlainText(info, text);
    return text;
}

template <class Info = CVelmora_DevProviderManageInfo>
Info Read(const std::string& text, Info info = {}) {
    TextBuffer buffer(text);
    CProviderManageInfo("r").toObject(buffer.get(), info);
    return info;
}

TEST(TextToRecordsTest, RealisticRepliesReadBackWhole) {
    const CVelmora_DevProviderManageInfo devices = qel_test::SampleDevProvider();
    EXPECT_EQ(nlohmann::json(Read(Plain(devices))), nlohmann::json(devices));
    // Empty lists that end the reply read back empty, at every depth.
    CVelmora_ToolProviderManageInfo tools = qel_test::SampleToolProvider();
    for (std::size_t count : {2u, 1u, 0u}) {
        tools.ToolInfo.resize(count);
        EXPECT_EQ(nlohmann::json(Read(Plain(tools), CVelmora_ToolProviderManageInfo())),
                  nlohmann::json(tools));
        if (count == 2) {
            CVelmora_ManageRepositoryInfo& last = tools.ToolInfo[0].ModuleInfo[0].RepositoryInfo[0];
            last.DependencyInfoSelf.clear();
            last.DependencyInfoOther.clear();
        }
    }
}

const char kProvider[] =
    "string;ProviderName;P;string;ProviderVendorName;V;string;ProviderVersion;1;";
const char kDevice[] =
    "string;VendorName;N;string;UniqueName;U;string;DeviceId;PCIROOT-8086-10FB;"
    "string;HardwareVersion;01;string[];ExtendedInfo;a!#b;";

TEST(TextToRecordsTest, ListsEndWhereTheNextFirstFieldIsMissing) {
    const std::string noVendor = std::string(kDevice).substr(20);
    std::string pathNamed;  // what toString writes carries paths: no device reads
    CProviderManageInfo("w").toString(qel_test::SampleDevProvider(), pathNamed);
    const std::pair<std::string, std::size_t> cases[] = {
        {std::string(kProvider) + kDevice + kDevice, 2},
        {std::string("class;DevProviderManageInfo;;") + kProvider + "class;DeviceInfo;;" + kDevice +
             "class;DeviceInfo;;" + kDevice,
         2},  // headers are optional
        {std::string(kProvider) + kDevice + noVendor + kDevice, 1},
        {std::string(kProvider) + kDevice + std::string(kDevice).substr(0, 30), 2},  // cut: kept
        {pathNamed, 0},
        {"", 0},
    };
    for (const auto& c : cases) {
        const CVelmora_DevProviderManageInfo info = Read(c.first);
        EXPECT_EQ(info.DeviceInfo.size(), c.second) << c.first;
        if (c.second == 2) {
            EXPECT_EQ(info.DeviceInfo[0].ExtendedInfo.size(), 2u);
        }
    }
    EXPECT_EQ(Read(pathNamed).ProviderName, "VelmoraNicProvider");
    // Appending, and an empty text that leaves the provider's fields alone.
    CVelmora_DevProviderManageInfo kept;
    kept.ProviderName = "kept";
    kept.DeviceInfo.resize(1);
    EXPECT_EQ(Read("", kept).ProviderName, "kept");
    EXPECT_EQ(Read(Plain(qel_test::SampleDevProvider()), kept).DeviceInfo.size(), 4u);
}

TEST(TextToRecordsTest, FieldRules) {
    CProviderManageInfo codec("r");
    // DisplayName before VendorVersion (the writer's order): the cursor stays
    // on VendorVersion and every later field reads as absent.
    TextBuffer swapped(
        "string;ApplyKind;Online;string;HardwareVersion;A1;string;DisplayName;D;"
        "string;VendorVersion;3;string;ModulePath;/p;int;Priority;4;bool;Recovery;true;");
    CVelmora_ManageModuleInfo module;
    codec.setRepositoryInfo(swapped.get(), module);
    CVelmora_ManageRepositoryInfo want;
    want.ApplyKind = "Online";
    want.HardwareVersion = "A1";
    want.DisplayName = "D";
    EXPECT_EQ(nlohmann::json(module.RepositoryInfo),
              nlohmann::json(std::vector<CVelmora_ManageRepositoryInfo>{want}));
    TextBuffer ints("string;ModuleKind;FW;string;ModuleName;M;int;Other;5;int;UpdateStatus;1;");
    CVelmora_DeviceInfo device;
    codec.setModuleInfo(ints.get(), device);
    EXPECT_EQ(device.ModuleInfo.at(0).UpdatePriority + device.ModuleInfo.at(0).UpdateStatus, 0);
    for (const auto& flag : {std::make_pair("1", false), std::make_pair("true", true)}) {
        TextBuffer text(
            std::string("string;ApplyKind;A;string;HardwareVersion;;string;VendorVersion;;"
                        "string;DisplayName;;string;ModulePath;;int;Priority;1;string;"
                        "ReqProviderVersion;;string;RebootAfterPreUpdate;;string;"
                        "RebootAfterUpdate;;string;RebootAfterRestore;;bool;Recovery;") +
            flag.first + ";");
        CVelmora_ManageModuleInfo m;
        codec.setRepositoryInfo(text.get(), m);
        EXPECT_EQ(m.RepositoryInfo.at(0).Recovery, flag.second) << flag.first;
    }
}

TEST(TextToRecordsTest, OnlyTheDeviceLinkAppReaderTracesElements) {
    qel_test::TraceRecorder traces;
    CProviderManageInfo codec("links");
    TextBuffer text(
        "class;LinkAppInfo;;string;ApplicationName;A;string;ExecutePath;/a;"
        "string;DescriptionFilePath;/d;string;ApplicationName;B;");
    CVelmora_DeviceInfo device;
    traces.Clear();
    codec.setLinkAppInfo(text.get(), device);
    EXPECT_EQ(device.LinkAppInfo.size(), 2u);
    EXPECT_EQ(traces.Texts(),
              (std::vector<std::string>{"[enter] setLinkAppInfo", "[leave] setLinkAppInfo",
                                        "[enter] setLinkAppInfo", "[leave] setLinkAppInfo",
                                        "[enter] setLinkAppInfo"}));
    EXPECT_EQ(traces.Lines()[0].level, 32);
    traces.Clear();
    CVelmora_ToolInfo tool;
    codec.setLinkAppInfo(text.get(), tool);
    EXPECT_EQ(nlohmann::json(tool.LinkAppInfo), nlohmann::json(device.LinkAppInfo));
    EXPECT_TRUE(traces.Lines().empty());
}

}  // namespace
