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

CVelmora_DevProviderManageInfo Read(const std::string& text,
                                    CVelmora_DevProviderManageInfo info = {}) {
    TextBuffer buffer(text);
    CProviderManageInfo("r").toObject(buffer.get(), info);
    return info;
}

TEST(TextToRecordsTest, RealisticRepliesReadBackCompletely) {
    const CVelmora_DevProviderManageInfo source = qel_test::SampleDevProvider();
    const CVelmora_DevProviderManageInfo info = Read(Plain(source));
    EXPECT_EQ(info.ProviderName + " " + info.ProviderVersion, "VelmoraNicProvider 4.1.0");
    ASSERT_EQ(info.DeviceInfo.size(), 3u);
    for (std::size_t i = 0; i < 3; ++i) {
        const CVelmora_DeviceInfo& got = info.DeviceInfo[i];
        const CVelmora_DeviceInfo& want = source.DeviceInfo[i];
        EXPECT_EQ(got.DeviceId + got.HardwareVersion, want.DeviceId + want.HardwareVersion);
        EXPECT_EQ(got.ExtendedInfo, want.ExtendedInfo);
        EXPECT_EQ(got.DeviceName, "");  // never in the reply
        ASSERT_EQ(got.LinkAppInfo.size(), 1u);
        EXPECT_EQ(got.LinkAppInfo[0].DescriptionFilePath, want.LinkAppInfo[0].DescriptionFilePath);
        ASSERT_EQ(got.ModuleInfo.size(), 2u);
        EXPECT_EQ(got.ModuleInfo[0].ModuleName, want.ModuleInfo[0].ModuleName);
        EXPECT_EQ(got.ModuleInfo[0].UpdateStatus, -3);
        ASSERT_EQ(got.ModuleInfo[0].RepositoryInfo.size(), 2u);
        const CVelmora_ManageRepositoryInfo& e = got.ModuleInfo[0].RepositoryInfo[0];
        const CVelmora_ManageRepositoryInfo& w = want.ModuleInfo[0].RepositoryInfo[0];
        EXPECT_EQ(e.VendorVersion + e.ModulePath, w.VendorVersion + w.ModulePath);
        EXPECT_EQ(e.Priority, 2);
        EXPECT_TRUE(e.Recovery);
        EXPECT_EQ(e.ModuleFileName, w.ModuleFileName);
        EXPECT_EQ(e.ManualFileName, w.ManualFileName);  // ";" inside an element survives
        EXPECT_TRUE(e.ReleasenotesFileName.empty());
        ASSERT_EQ(e.DependencyInfoSelf.size(), 2u);
        ASSERT_EQ(e.DependencyInfoOther.size(), 1u);
        EXPECT_EQ(e.DependencyInfoSelf[1].ModuleName, w.DependencyInfoSelf[1].ModuleName);
        EXPECT_EQ(e.DependencyInfoOther[0].UpperVendorVersion, "2.0");
    }
    TextBuffer tools(Plain(qel_test::SampleToolProvider()));
    CVelmora_ToolProviderManageInfo tool;
    CProviderManageInfo("r").toObject(tools.get(), tool);
    ASSERT_EQ(tool.ToolInfo.size(), 2u);
    EXPECT_EQ(tool.ToolInfo[1].ModuleInfo.at(0).RepositoryInfo.size(), 1u);
    // Empty lists that end the reply read back empty, at every depth.
    CVelmora_ToolProviderManageInfo lean = qel_test::SampleToolProvider();
    lean.ToolInfo.resize(1);
    CVelmora_ManageRepositoryInfo& last = lean.ToolInfo[0].ModuleInfo.back().RepositoryInfo.back();
    last.DependencyInfoSelf.clear();
    last.DependencyInfoOther.clear();
    for (std::size_t tools : {1u, 0u}) {
        lean.ToolInfo.resize(tools);
        TextBuffer text(Plain(lean));
        CVelmora_ToolProviderManageInfo back;
        CProviderManageInfo("r").toObject(text.get(), back);
        ASSERT_EQ(back.ToolInfo.size(), tools);
        if (tools == 1) {
            const CVelmora_ManageRepositoryInfo& got =
                back.ToolInfo[0].ModuleInfo.back().RepositoryInfo.back();
            EXPECT_TRUE(got.DependencyInfoSelf.empty() && got.DependencyInfoOther.empty());
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
    CProviderManageInfo writer("w");
    std::string pathNamed;  // what toString writes carries paths: no device reads
    writer.toString(qel_test::SampleDevProvider(), pathNamed);
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
    const CVelmora_ManageRepositoryInfo& e = module.RepositoryInfo.at(0);
    EXPECT_EQ(e.HardwareVersion + "|" + e.VendorVersion + "|" + e.DisplayName + "|" + e.ModulePath,
              "A1||D|");
    EXPECT_EQ(e.Priority, 0);
    EXPECT_FALSE(e.Recovery);
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

TEST(TextToRecordsTest, TruncationAtEveryPlaceStopsCleanly) {
    const std::string text = Plain(qel_test::SampleDevProvider());
    std::size_t previous = 0;
    for (std::size_t cut = 0; cut <= text.size(); cut += 7) {
        const std::size_t devices = Read(text.substr(0, cut)).DeviceInfo.size();
        EXPECT_GE(devices, previous);
        previous = devices;
    }
    EXPECT_EQ(previous, 3u);
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
    EXPECT_EQ(tool.LinkAppInfo.size(), 2u);
    EXPECT_TRUE(traces.Lines().empty());
}

}  // namespace
