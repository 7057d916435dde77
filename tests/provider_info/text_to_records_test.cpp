// Reply text into provider records: positional reading and its limits.
#include <gtest/gtest.h>

#include "CProviderManageInfo.h"
#include "provider_info/plain_text.h"
#include "support/sample_providers.h"
#include "support/text_buffer.h"
#include "support/trace_recorder.h"

namespace {

using nlohmann::json;
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
    EXPECT_EQ(json(Read(Plain(devices))), json(devices));
    // Empty lists that end the reply read back empty, at every depth.
    CVelmora_ToolProviderManageInfo tools = qel_test::SampleToolProvider();
    for (std::size_t count : {2u, 1u, 0u}) {
        tools.ToolInfo.resize(count);
        EXPECT_EQ(json(Read(Plain(tools), CVelmora_ToolProviderManageInfo())), json(tools));
        if (count == 2)
            tools.ToolInfo[0].ModuleInfo[0].RepositoryInfo[0] = {};
    }
}

TEST(TextToRecordsTest, ListsEndWhereTheNextFirstFieldIsMissing) {
    const std::string provider =
        "string;ProviderName;P;string;ProviderVendorName;V;string;ProviderVersion;1;";
    const std::string device =
        "string;VendorName;N;string;UniqueName;U;string;DeviceId;PCIROOT-8086-10FB;"
        "string;HardwareVersion;01;string[];ExtendedInfo;a!#b;";
    std::string pathNamed;  // what toString writes carries paths: no device reads
    CProviderManageInfo("w").toString(qel_test::SampleDevProvider(), pathNamed);
    // clang-format off
    const std::pair<std::string, std::size_t> cases[] = {{provider + device + device, 2},
        {"class;DevProviderManageInfo;;" + provider + "class;DeviceInfo;;" + device +
             "class;DeviceInfo;;" + device, 2},  // headers are optional
        {provider + device + device.substr(20) + device, 1},
        {provider + device + device.substr(0, 30), 2},  // cut: kept
        {pathNamed, 0}, {"", 0}};
    // clang-format on
    for (const auto& c : cases) {
        const CVelmora_DevProviderManageInfo info = Read(c.first);
        EXPECT_EQ(info.DeviceInfo.size(), c.second) << c.first;
        EXPECT_EQ(info.DeviceInfo.empty() ? 2u : info.DeviceInfo[0].ExtendedInfo.size(), 2u);
    }
    EXPECT_EQ(Read(pathNamed).ProviderName, "VelmoraNicProvider");
    // Appending, and an empty text that leaves the provider's fields alone.
    const auto kept = json::parse(R"({"ProviderName":"kept","DeviceInfo":[{}]})")
                          .get<CVelmora_DevProviderManageInfo>();
    EXPECT_EQ(Read("", kept).ProviderName, "kept");
    EXPECT_EQ(Read(Plain(qel_test::SampleDevProvider()), kept).DeviceInfo.size(), 4u);
}

TEST(TextToRecordsTest, FieldRulesAndLinkAppTraces) {
    CProviderManageInfo codec("r");
    // DisplayName before VendorVersion (the writer's order): the cursor stays
    // on VendorVersion and every later field reads as absent.
    TextBuffer swapped(
        "string;ApplyKind;Online;string;HardwareVersion;A1;string;DisplayName;D;"
        "string;VendorVersion;3;string;ModulePath;/p;int;Priority;4;bool;Recovery;true;");
    CVelmora_ManageModuleInfo module;
    codec.setRepositoryInfo(swapped.get(), module);
    EXPECT_EQ(
        json(module.RepositoryInfo),
        json(json::parse(R"([{"ApplyKind":"Online","HardwareVersion":"A1","DisplayName":"D"}])")
                 .get<std::vector<CVelmora_ManageRepositoryInfo>>()));
    TextBuffer ints("string;ModuleKind;FW;string;ModuleName;M;int;Other;5;int;UpdateStatus;1;");
    CVelmora_DeviceInfo device;
    codec.setModuleInfo(ints.get(), device);
    EXPECT_EQ(device.ModuleInfo.at(0).UpdatePriority + device.ModuleInfo.at(0).UpdateStatus, 0);
    for (const char* flag : {"1", "true"}) {
        TextBuffer text(
            std::string("string;ApplyKind;A;string;HardwareVersion;;string;VendorVersion;;"
                        "string;DisplayName;;string;ModulePath;;int;Priority;1;string;"
                        "ReqProviderVersion;;string;RebootAfterPreUpdate;;string;"
                        "RebootAfterUpdate;;string;RebootAfterRestore;;bool;Recovery;") +
            flag + ";");
        codec.setRepositoryInfo(text.get(), module);
        EXPECT_EQ(module.RepositoryInfo.back().Recovery, *flag == 't') << flag;
    }
    // Only the device's linked-application reader traces its elements.
    qel_test::TraceRecorder traces;
    TextBuffer links(
        "class;LinkAppInfo;;string;ApplicationName;A;string;ExecutePath;/a;"
        "string;DescriptionFilePath;/d;string;ApplicationName;B;");
    codec.setLinkAppInfo(links.get(), device);
    EXPECT_EQ(device.LinkAppInfo.size(), 2u);
    const std::string enter = "[enter] setLinkAppInfo", leave = "[leave] setLinkAppInfo";
    EXPECT_EQ(traces.Texts(), (std::vector<std::string>{enter, leave, enter, leave, enter}));
    EXPECT_EQ(traces.Lines()[0].level, 32);
    traces.Clear();
    CVelmora_ToolInfo tool;
    codec.setLinkAppInfo(links.get(), tool);
    EXPECT_EQ(json(tool.LinkAppInfo), json(device.LinkAppInfo));
    EXPECT_TRUE(traces.Lines().empty());
}

}  // namespace
