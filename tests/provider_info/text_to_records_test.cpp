// Reply text into provider records: positional reading and its limits.
#include <gtest/gtest.h>

#include "CProviderManageInfo.h"
#include "support/sample_providers.h"
#include "support/text_buffer.h"
#include "support/trace_recorder.h"

namespace {

using nlohmann::json;
using qel_test::TextBuffer;

template <class Info = CVelmora_DevProviderManageInfo>
Info Read(const std::string& text, Info info = {}) {
    TextBuffer buffer(text);
    CProviderManageInfo("r").toObject(buffer.get(), info);
    return info;
}

// The service's replies read back whole and are appended to the devices
// already there; a list ends where its next element's first field is missing.
TEST(TextToRecordsTest, RepliesReadBackWholeAndListsEndWhereTheNextFirstFieldIsMissing) {
    const auto kept = json::parse(R"({"ProviderName":"kept","DeviceInfo":[{}]})")
                          .get<CVelmora_DevProviderManageInfo>();
    EXPECT_EQ(json(Read("", kept)), json(kept));  // an empty text changes nothing
    CVelmora_DevProviderManageInfo devices = qel_test::SampleDevProvider();
    const std::string reply = qel_test::PlainText(devices);
    devices.DeviceInfo.insert(devices.DeviceInfo.begin(), kept.DeviceInfo[0]);
    EXPECT_EQ(json(Read(reply, kept)), json(devices));
    // Empty lists that end the reply read back empty, at every depth.
    CVelmora_ToolProviderManageInfo tools = qel_test::SampleToolProvider();
    for (std::size_t count : {2u, 1u, 0u}) {
        tools.ToolInfo.resize(count);
        EXPECT_EQ(json(Read<CVelmora_ToolProviderManageInfo>(qel_test::PlainText(tools))),
                  json(tools));
        if (count == 2)
            tools.ToolInfo[0].ModuleInfo[0].RepositoryInfo[0] = {};
    }
    // Device headers are optional; a device without its first field ends the
    // list, a cut one is kept, also when the cut falls in its first field.
    const std::string device =
        "string;VendorName;N;string;UniqueName;U;string;DeviceId;PCIROOT-8086-10FB;"
        "string;HardwareVersion;01;string[];ExtendedInfo;a!#b;";
    std::string pathNamed;  // what toString writes carries paths: no device reads
    CProviderManageInfo("w").toString(qel_test::SampleDevProvider(), pathNamed);
    const std::pair<std::string, std::size_t> cases[] = {{device + device, 2},
                                                         {device + device.substr(20) + device, 1},
                                                         {device + device.substr(0, 30), 2},
                                                         {device + device.substr(0, 19), 2},
                                                         {pathNamed, 0}};
    for (const auto& c : cases)
        EXPECT_EQ(Read(c.first).DeviceInfo.size(), c.second) << c.first;
    EXPECT_EQ(Read(pathNamed).ProviderName, "VelmoraNicProvider");
}

TEST(TextToRecordsTest, FieldRulesAndLinkAppTraces) {
    CProviderManageInfo codec("r");
    // DisplayName before VendorVersion (toString's order): the cursor stays on
    // VendorVersion, and no later field of any kind is read, not even the
    // ReqProviderVersion right after it.
    TextBuffer swapped(
        "string;ApplyKind;Online;string;HardwareVersion;A1;string;DisplayName;D;"
        "string;VendorVersion;3;string;ReqProviderVersion;R;bool;Recovery;true;");
    CVelmora_ManageModuleInfo module;
    codec.setRepositoryInfo(swapped.get(), module);
    EXPECT_EQ(
        json(module.RepositoryInfo),
        json(json::parse(R"([{"ApplyKind":"Online","HardwareVersion":"A1","DisplayName":"D"}])")
                 .get<std::vector<CVelmora_ManageRepositoryInfo>>()));
    // A flag is true only as "true", as the service writes it: "1" reads false.
    std::string reply = qel_test::PlainText(qel_test::SampleDevProvider());
    reply.replace(reply.find(";Recovery;true;"), 15, ";Recovery;1;");
    EXPECT_FALSE(Read(reply).DeviceInfo[0].ModuleInfo[0].RepositoryInfo[0].Recovery);
    // Only the device's linked-application reader traces its elements.
    qel_test::TraceRecorder traces;
    TextBuffer links(
        "class;LinkAppInfo;;string;ApplicationName;A;string;ExecutePath;/a;"
        "string;DescriptionFilePath;/d;string;ApplicationName;B;");
    CVelmora_DeviceInfo device;
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
