// Reply text into property-object trees: forward searches and ownership.
#include <gtest/gtest.h>

#include "CProviderManageInfo.h"
#include "provider_info/plain_text.h"
#include "support/sample_providers.h"
#include "support/text_buffer.h"
#include "support/trace_recorder.h"

namespace {

using qel_test::TextBuffer;
typedef std::vector<IWbemClassObject*> Objects;

const Objects& List(const IWbemClassObject& obj, const char* name) {
    const Objects* const* list = obj.GetAs<Objects*>(name);
    static const Objects kNone;
    return list != nullptr && *list != nullptr ? **list : kNone;
}

std::string Text(const IWbemClassObject& obj, const char* name) {
    const std::string* value = obj.GetAs<std::string>(name);
    return value != nullptr ? *value : "<absent>";
}

void Read(const std::string& text, IWbemClassObject& out) {
    TextBuffer buffer(text);
    CProviderManageInfo codec("tree");
    codec.toObject(buffer.get(), out);
}

TEST(TextToObjectsTest, RealisticReplyBuildsTheTree) {
    std::string text;
    qel::pm::WritePlainText(qel_test::SampleDevProvider(), text);
    IWbemClassObject out;
    Read(text, out);
    ASSERT_EQ(out.size(), 1u);
    IWbemClassObject* const* provider = out.GetAs<IWbemClassObject*>("DevProviderManageInfo");
    ASSERT_NE(provider, nullptr);
    EXPECT_EQ(Text(**provider, "ProviderVersion"), "4.1.0");
    const Objects& devices = List(**provider, "DeviceInfo");
    ASSERT_EQ(devices.size(), 3u);
    const IWbemClassObject& device = *devices[1];
    EXPECT_EQ(Text(device, "DeviceId"), "PCIROOT-14E4-1657-0001");
    EXPECT_EQ(Text(device, "ExtendedInfo"), "slot=1!#numa=0");  // one joined string
    EXPECT_EQ(List(device, "LinkAppInfo").size(), 1u);
    const Objects& modules = List(device, "ModuleInfo");
    ASSERT_EQ(modules.size(), 2u);
    EXPECT_EQ(*modules[0]->GetAs<int>("UpdateStatus"), -3);
    const Objects& entries = List(*modules[0], "RepositoryInfo");
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(*entries[0]->GetAs<int>("Priority"), 2);
    EXPECT_TRUE(*entries[0]->GetAs<bool>("Recovery"));
    EXPECT_EQ(Text(*entries[0], "ManualFileName"), "manual;1m0r0.pdf");
    EXPECT_EQ(List(*entries[0], "DependencyInfoSelf").size(), 2u);
    EXPECT_EQ(List(*entries[0], "DependencyInfoOther").size(), 1u);
    EXPECT_EQ(Text(*List(*entries[0], "DependencyInfoOther")[0], "ModuleName"),
              "dep-module-1m0r0-o0");
    EXPECT_TRUE(List(*entries[1], "DependencyInfoOther").empty());
}

TEST(TextToObjectsTest, DependencyRunTakesTheNextModulesLeadingItems) {
    // Unlike the record reader, the tree reader takes dependency fields in
    // any order until another name comes; "ModuleKind" and "ModuleName" are
    // dependency fields, so a module right after a non-empty second
    // dependency list is read into that dependency.
    CVelmora_DevProviderManageInfo info = qel_test::SampleDevProvider();
    info.DeviceInfo.resize(1);
    CVelmora_ManageModuleInfo& first = info.DeviceInfo[0].ModuleInfo[0];
    first.RepositoryInfo.back().DependencyInfoOther = {qel_test::SampleDependency("x")};
    std::string text;
    qel::pm::WritePlainText(info, text);
    IWbemClassObject out;
    Read(text, out);
    IWbemClassObject* provider = *out.GetAs<IWbemClassObject*>("DevProviderManageInfo");
    const Objects& modules = List(*List(*provider, "DeviceInfo")[0], "ModuleInfo");
    ASSERT_EQ(modules.size(), 1u);
    const Objects& entries = List(*modules[0], "RepositoryInfo");
    const IWbemClassObject& dep = *List(*entries.back(), "DependencyInfoOther")[0];
    EXPECT_EQ(Text(dep, "ModuleName"), "module-0m1");  // the next module's name, on top

    CVelmora_DevProviderManageInfo records;
    TextBuffer buffer(text);
    CProviderManageInfo codec("records");
    codec.toObject(buffer.get(), records);
    EXPECT_EQ(records.DeviceInfo[0].ModuleInfo.size(), 2u);
}

TEST(TextToObjectsTest, ProviderHeaderDecidesTheKind) {
    const std::pair<const char*, const char*> cases[] = {
        {"string;ProviderName;P;", ""},
        {"", ""},
        {"class;ToolProviderManageInfo;;class;DevProviderManageInfo;;", "DevProviderManageInfo"},
        {"class;ToolProviderManageInfo;;string;ProviderName;T;", "ToolProviderManageInfo"},
    };
    for (const auto& c : cases) {
        qel_test::TraceRecorder traces;
        IWbemClassObject out;
        Read(c.first, out);
        EXPECT_EQ(out.empty() ? "" : out.begin()->first, c.second) << c.first;
        // Without a provider header the reader returns early, with no exit trace.
        EXPECT_EQ(
            traces.Contains("[LEAVE] void CProviderManageInfo::toObject(char*, IWbemClassObject&)"),
            !out.empty());
    }
}

TEST(TextToObjectsTest, RepositoryFieldsInAnyOrderAndFlagRules) {
    TextBuffer text(
        "class;RepositoryInfo;;string;ApplyKind;Online;bool;Recovery;1;int;Priority;-7;"
        "string;DisplayName;D;string;HardwareVersion;H;string[];ModuleFileName;a!#b;"
        "class;DependencyInfoSelf;;string;ProviderName;X;string;UpperVendorVersion;9;"
        "string;VendorName;V;class;DependencyInfoOther;;");
    IWbemClassObject module;
    CProviderManageInfo codec("tree");
    codec.setRepositoryInfo(text.get(), module);
    const Objects& entries = List(module, "RepositoryInfo");
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_FALSE(*entries[0]->GetAs<bool>("Recovery"));
    EXPECT_EQ(*entries[0]->GetAs<int>("Priority"), -7);
    EXPECT_EQ(Text(*entries[0], "ModuleFileName"), "a!#b");
    EXPECT_EQ(Text(*entries[0], "HardwareVersion"), "H");
    const Objects& deps = List(*entries[0], "DependencyInfoSelf");
    ASSERT_EQ(deps.size(), 1u);
    EXPECT_EQ(Text(*deps[0], "VendorName"), "V");
    EXPECT_EQ(Text(*deps[0], "UpperVendorVersion"), "9");
    EXPECT_TRUE(List(*entries[0], "DependencyInfoOther").empty());
}

TEST(TextToObjectsTest, ForwardSearchTakesAMissingFieldFromALaterElement) {
    // The first device lacks DeviceId; the search finds the second device's.
    const std::string text =
        "class;DevProviderManageInfo;;string;ProviderName;P;string;ProviderVendorName;V;"
        "string;ProviderVersion;1;class[];DeviceInfo;;"
        "string;VendorName;A;string;UniqueName;first;"
        "class[];LinkAppInfo;;class[];ModuleInfo;;"
        "string;VendorName;B;string;UniqueName;second;string;DeviceId;PCIROOT-8086-10FB;"
        "class[];LinkAppInfo;;class[];ModuleInfo;;";
    IWbemClassObject out;
    Read(text, out);
    IWbemClassObject* provider = *out.GetAs<IWbemClassObject*>("DevProviderManageInfo");
    const Objects& devices = List(*provider, "DeviceInfo");
    ASSERT_EQ(devices.size(), 2u);
    EXPECT_EQ(Text(*devices[0], "DeviceId"), "PCIROOT-8086-10FB");
    EXPECT_EQ(Text(*devices[0], "UniqueName"), "first");
    EXPECT_EQ(Text(*devices[1], "UniqueName"), "second");
    // Each device carries a module list, empty here.
    EXPECT_NE(devices[0]->Get("ModuleInfo"), nullptr);
    EXPECT_TRUE(List(*devices[0], "ModuleInfo").empty());
}

TEST(TextToObjectsTest, ListEndsWhereTheReadersSay) {
    // No module header anywhere: the device list ends after the first device;
    // provider fields are pushed even when missing.
    IWbemClassObject out;
    Read(
        "class;DevProviderManageInfo;;string;ProviderName;P;class[];DeviceInfo;;"
        "string;VendorName;A;string;VendorName;B;",
        out);
    IWbemClassObject* provider = *out.GetAs<IWbemClassObject*>("DevProviderManageInfo");
    EXPECT_EQ(Text(*provider, "ProviderVendorName"), "");
    const Objects& devices = List(*provider, "DeviceInfo");
    ASSERT_EQ(devices.size(), 1u);
    EXPECT_TRUE(List(*devices[0], "ModuleInfo").empty() &&
                List(*devices[0], "LinkAppInfo").empty());
    // Only the first linked application reaches the tree when a module list follows.
    CVelmora_DevProviderManageInfo info = qel_test::SampleDevProvider();
    info.DeviceInfo.resize(1);
    info.DeviceInfo[0].LinkAppInfo.push_back(info.DeviceInfo[0].LinkAppInfo[0]);
    std::string text;
    qel::pm::WritePlainText(info, text);
    IWbemClassObject two;
    Read(text, two);
    const IWbemClassObject& device =
        *List(**two.GetAs<IWbemClassObject*>("DevProviderManageInfo"), "DeviceInfo")[0];
    EXPECT_EQ(List(device, "LinkAppInfo").size(), 1u);
    EXPECT_EQ(List(device, "ModuleInfo").size(), 2u);
}

TEST(TextToObjectsTest, EveryTruncationAndToolTextIsSafe) {
    std::string text;
    qel::pm::WritePlainText(qel_test::SampleDevProvider(), text);
    for (std::size_t cut = 0; cut <= text.size(); cut += 5) {
        IWbemClassObject out;  // freed with its whole tree at scope end
        Read(text.substr(0, cut), out);
        EXPECT_LE(out.size(), 1u);
    }
    std::string tools;
    qel::pm::WritePlainText(qel_test::SampleToolProvider(), tools);
    IWbemClassObject out;
    Read(tools, out);
    IWbemClassObject* provider = *out.GetAs<IWbemClassObject*>("ToolProviderManageInfo");
    EXPECT_EQ(List(*provider, "ToolInfo").size(), 2u);
}

}  // namespace
