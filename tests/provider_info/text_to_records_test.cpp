// Reply text into provider records: positional reading and its limits.
#include <gtest/gtest.h>

#include "CProviderManageInfo.h"
#include "provider_info/plain_text.h"
#include "support/sample_providers.h"
#include "support/text_buffer.h"
#include "support/trace_recorder.h"

namespace {

using qel_test::TextBuffer;

std::string PlainText(const CVelmora_DevProviderManageInfo& info) {
    std::string text;
    qel::pm::WritePlainText(info, text);
    return text;
}

CVelmora_DevProviderManageInfo Read(const std::string& text) {
    TextBuffer buffer(text);
    CVelmora_DevProviderManageInfo info;
    CProviderManageInfo codec("r");
    codec.toObject(buffer.get(), info);
    return info;
}

void ExpectSameDependency(const CVelmora_DependencyInfo& a, const CVelmora_DependencyInfo& b) {
    EXPECT_EQ(a.ProviderName, b.ProviderName);
    EXPECT_EQ(a.ModuleName, b.ModuleName);
    EXPECT_EQ(a.UpperVendorVersion, b.UpperVendorVersion);
}

TEST(TextToRecordsTest, RealisticReplyReadsBackCompletely) {
    const CVelmora_DevProviderManageInfo source = qel_test::SampleDevProvider();
    const CVelmora_DevProviderManageInfo info = Read(PlainText(source));
    EXPECT_EQ(info.ProviderName, "VelmoraNicProvider");
    EXPECT_EQ(info.ProviderVersion, "4.1.0");
    ASSERT_EQ(info.DeviceInfo.size(), 3u);
    for (std::size_t i = 0; i < 3; ++i) {
        const CVelmora_DeviceInfo& got = info.DeviceInfo[i];
        const CVelmora_DeviceInfo& want = source.DeviceInfo[i];
        EXPECT_EQ(got.DeviceId, want.DeviceId);
        EXPECT_EQ(got.HardwareVersion, want.HardwareVersion);
        EXPECT_EQ(got.ExtendedInfo, want.ExtendedInfo);
        EXPECT_EQ(got.DeviceName, "");
        ASSERT_EQ(got.LinkAppInfo.size(), 1u);
        EXPECT_EQ(got.LinkAppInfo[0].DescriptionFilePath, want.LinkAppInfo[0].DescriptionFilePath);
        ASSERT_EQ(got.ModuleInfo.size(), 2u);
        EXPECT_EQ(got.ModuleInfo[0].ModuleName, want.ModuleInfo[0].ModuleName);
        EXPECT_EQ(got.ModuleInfo[0].UpdateStatus, -3);
        ASSERT_EQ(got.ModuleInfo[0].RepositoryInfo.size(), 2u);
        const CVelmora_ManageRepositoryInfo& entry = got.ModuleInfo[0].RepositoryInfo[1];
        const CVelmora_ManageRepositoryInfo& wantEntry = want.ModuleInfo[0].RepositoryInfo[1];
        EXPECT_EQ(entry.VendorVersion, wantEntry.VendorVersion);
        EXPECT_EQ(entry.Priority, 2);
        EXPECT_TRUE(entry.Recovery);
        EXPECT_EQ(entry.ModuleFileName, wantEntry.ModuleFileName);
        EXPECT_EQ(entry.ManualFileName, wantEntry.ManualFileName);  // ";" inside survives
        EXPECT_TRUE(entry.ReleasenotesFileName.empty());
        ASSERT_EQ(entry.DependencyInfoSelf.size(), 2u);
        ExpectSameDependency(entry.DependencyInfoSelf[1], wantEntry.DependencyInfoSelf[1]);
        ASSERT_EQ(entry.DependencyInfoOther.size(), 0u);
        const CVelmora_ManageRepositoryInfo& first = got.ModuleInfo[0].RepositoryInfo[0];
        ASSERT_EQ(first.DependencyInfoOther.size(), 1u);
        ExpectSameDependency(first.DependencyInfoOther[0],
                             want.ModuleInfo[0].RepositoryInfo[0].DependencyInfoOther[0]);
    }
}

const char kDevice[] =
    "string;VendorName;N;string;UniqueName;U;string;DeviceId;PCIROOT-8086-10FB;"
    "string;HardwareVersion;01;string[];ExtendedInfo;a!#b;";

TEST(TextToRecordsTest, HeadersAreOptional) {
    const std::string bare = std::string("string;ProviderName;P;string;ProviderVendorName;V;"
                                         "string;ProviderVersion;1;") +
                             kDevice + kDevice;
    const std::string headed = std::string("class;DevProviderManageInfo;;string;ProviderName;P;"
                                           "string;ProviderVendorName;V;string;ProviderVersion;1;"
                                           "class;DeviceInfo;;") +
                               kDevice + "class;DeviceInfo;;" + kDevice;
    for (const std::string& text : {bare, headed}) {
        CVelmora_DevProviderManageInfo info = Read(text);
        ASSERT_EQ(info.DeviceInfo.size(), 2u) << text;
        EXPECT_EQ(info.DeviceInfo[1].ExtendedInfo, (std::vector<std::string>{"a", "b"}));
    }
}

TEST(TextToRecordsTest, PositionalReadingStopsAtTheFirstMisplacedItem) {
    struct Case {
        const char* what;
        std::string text;
        std::size_t devices;
    };
    const std::string provider =
        "string;ProviderName;P;string;ProviderVendorName;V;string;ProviderVersion;1;";
    std::string noVendor = kDevice;
    noVendor.erase(0, std::string("string;VendorName;N;").size());
    const Case cases[] = {
        {"missing VendorName ends the list", provider + kDevice + noVendor + kDevice, 1},
        {"empty text", "", 0},
        {"truncated second device", provider + kDevice + std::string(kDevice).substr(0, 30), 2},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Read(c.text).DeviceInfo.size(), c.devices) << c.what;
    }
    CProviderManageInfo writer("w");
    std::string written;
    writer.toString(qel_test::SampleDevProvider(), written);
    CVelmora_DevProviderManageInfo fromToString = Read(written);
    EXPECT_EQ(fromToString.ProviderName, "VelmoraNicProvider");
    EXPECT_TRUE(fromToString.DeviceInfo.empty());
}

TEST(TextToRecordsTest, FieldRules) {
    CProviderManageInfo codec("r");
    {
        // DisplayName before VendorVersion (the writer's order): the cursor
        // stays on VendorVersion and every later field reads as absent.
        TextBuffer text(
            "string;ApplyKind;Online;string;HardwareVersion;A1;string;DisplayName;D;"
            "string;VendorVersion;3;string;ModulePath;/p;int;Priority;4;bool;Recovery;true;");
        CVelmora_ManageModuleInfo module;
        codec.setRepositoryInfo(text.get(), module);
        ASSERT_EQ(module.RepositoryInfo.size(), 1u);
        const CVelmora_ManageRepositoryInfo& e = module.RepositoryInfo[0];
        EXPECT_EQ(e.HardwareVersion, "A1");
        EXPECT_EQ(e.VendorVersion, "");
        EXPECT_EQ(e.DisplayName, "D");
        EXPECT_EQ(e.ModulePath, "");
        EXPECT_EQ(e.Priority, 0);
        EXPECT_FALSE(e.Recovery);
    }
    {
        TextBuffer text(
            "string;ModuleKind;FW;string;ModuleName;M;int;Other;5;int;UpdateStatus;1;");
        CVelmora_DeviceInfo device;
        codec.setModuleInfo(text.get(), device);
        ASSERT_EQ(device.ModuleInfo.size(), 1u);
        EXPECT_EQ(device.ModuleInfo[0].UpdatePriority, 0);
        EXPECT_EQ(device.ModuleInfo[0].UpdateStatus, 0);
    }
    for (const auto& flag : {std::make_pair("1", false), std::make_pair("true", true)}) {
        TextBuffer text(std::string("string;ApplyKind;A;string;HardwareVersion;;string;"
                                    "VendorVersion;;string;DisplayName;;string;ModulePath;;"
                                    "int;Priority;1;string;ReqProviderVersion;;string;"
                                    "RebootAfterPreUpdate;;string;RebootAfterUpdate;;string;"
                                    "RebootAfterRestore;;bool;Recovery;") +
                        flag.first + ";");
        CVelmora_ManageModuleInfo module;
        codec.setRepositoryInfo(text.get(), module);
        ASSERT_EQ(module.RepositoryInfo.size(), 1u);
        EXPECT_EQ(module.RepositoryInfo[0].Recovery, flag.second) << flag.first;
    }
}

TEST(TextToRecordsTest, AppendsAndKeepsProviderFieldsOnEmptyText) {
    CProviderManageInfo codec("r");
    CVelmora_DevProviderManageInfo info;
    info.ProviderName = "kept";
    info.DeviceInfo.resize(1);
    TextBuffer empty("");
    codec.toObject(empty.get(), info);
    EXPECT_EQ(info.ProviderName, "kept");
    EXPECT_EQ(info.DeviceInfo.size(), 1u);
    TextBuffer text(PlainText(qel_test::SampleDevProvider()));
    codec.toObject(text.get(), info);
    EXPECT_EQ(info.DeviceInfo.size(), 4u);
    EXPECT_EQ(info.ProviderName, "VelmoraNicProvider");
}

TEST(TextToRecordsTest, ToolProvider) {
    std::string text;
    qel::pm::WritePlainText(qel_test::SampleToolProvider(), text);
    TextBuffer buffer(text);
    CVelmora_ToolProviderManageInfo info;
    CProviderManageInfo codec("r");
    codec.toObject(buffer.get(), info);
    ASSERT_EQ(info.ToolInfo.size(), 2u);
    EXPECT_EQ(info.ToolInfo[1].UniqueName, "tool-1");
    ASSERT_EQ(info.ToolInfo[1].ModuleInfo.size(), 1u);
    EXPECT_EQ(info.ToolInfo[1].ModuleInfo[0].RepositoryInfo.size(), 1u);
}

TEST(TextToRecordsTest, EveryTruncationStopsCleanly) {
    const std::string text = PlainText(qel_test::SampleDevProvider());
    std::size_t previous = 0;
    for (std::size_t cut = 0; cut <= text.size(); cut += 7) {
        const std::size_t devices = Read(text.substr(0, cut)).DeviceInfo.size();
        EXPECT_GE(devices, previous);
        previous = devices;
    }
    EXPECT_EQ(previous, 3u);
}

TEST(TextToRecordsTest, DeviceLinkAppReaderTracesEachElement) {
    qel_test::TraceRecorder traces;
    CProviderManageInfo codec("links");
    TextBuffer text(
        "class;LinkAppInfo;;string;ApplicationName;A;string;ExecutePath;/a;"
        "string;DescriptionFilePath;/d;string;ApplicationName;B;");
    CVelmora_DeviceInfo device;
    traces.Clear();
    codec.setLinkAppInfo(text.get(), device);
    EXPECT_EQ(device.LinkAppInfo.size(), 2u);
    std::vector<std::string> detail;
    for (const auto& line : traces.Lines()) {
        if (line.level == 32) detail.push_back(line.text);
    }
    EXPECT_EQ(detail, (std::vector<std::string>{"[enter] setLinkAppInfo", "[leave] setLinkAppInfo",
                                                "[enter] setLinkAppInfo", "[leave] setLinkAppInfo",
                                                "[enter] setLinkAppInfo"}));
    traces.Clear();
    CVelmora_ToolInfo tool;
    codec.setLinkAppInfo(text.get(), tool);
    EXPECT_EQ(tool.LinkAppInfo.size(), 2u);
    EXPECT_TRUE(traces.Lines().empty());
}

}  // namespace
