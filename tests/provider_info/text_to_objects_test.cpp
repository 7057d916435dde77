// Reply text into property-object trees: whole trees, forward searches, list ends.
#include <gtest/gtest.h>

#include "CProviderManageInfo.h"
#include "framework/live_blocks.h"
#include "common/object_json.h"
#include "support/sample_providers.h"
#include "support/text_buffer.h"
#include "support/trace_recorder.h"

namespace {

// The tree read from `text`, which frees everything it holds (checked
// unless a trace recorder keeps blocks); `arrays` as ObjectJson takes them.
nlohmann::ordered_json Tree(const std::string& text, bool countBlocks = true,
                            const std::set<std::string>& arrays = {}) {
    qel_test::TextBuffer buffer(text);
    nlohmann::ordered_json tree;
    auto read = [&] {
        IWbemClassObject out;
        CProviderManageInfo("tree").toObject(buffer.get(), out);
        tree = qel::ObjectJson(out, arrays);
    };
    EXPECT_EQ(countBlocks ? qel_test::BlocksLeftBy(read) : (read(), 0L), 0);
    return tree;
}

// The tree of a realistic reply holds its records whole (the field lists are
// the record reader's too, so the tool provider's are checked there). Unlike
// the record reader, the tree reader takes dependency fields in any order
// until another name comes; "ModuleKind" and "ModuleName" are dependency
// fields, so a module right after a non-empty last dependency list is read
// into that dependency, and the device search, going on from there, makes a
// device of a later dependency's and entry's fields: here in the last device.
TEST(TextToObjectsTest, RealisticRepliesGiveTheWholeTree) {
    CVelmora_DevProviderManageInfo devices = qel_test::SampleDevProvider();
    std::vector<CVelmora_ManageModuleInfo>& modules = devices.DeviceInfo.back().ModuleInfo;
    modules[0].RepositoryInfo.back().DependencyInfoOther =
        modules[0].RepositoryInfo[0].DependencyInfoOther;
    const nlohmann::ordered_json tree =
        Tree(qel_test::PlainText(devices), true,
             {"ExtendedInfo", "ModuleFileName", "ManualFileName", "ReleasenotesFileName"});
    const auto got = nlohmann::json::parse(tree.at("DevProviderManageInfo").dump())
                         .get<CVelmora_DevProviderManageInfo>();
    CVelmora_DependencyInfo& dep = modules[0].RepositoryInfo.back().DependencyInfoOther[0];
    dep.ModuleKind = modules[1].ModuleKind;
    dep.ModuleName = modules[1].ModuleName;
    CVelmora_DeviceInfo stray;
    stray.VendorName = "Velmora";
    stray.UniqueName = modules[1].RepositoryInfo[0].DependencyInfoSelf[0].UniqueName;
    stray.HardwareVersion = modules[1].RepositoryInfo[0].HardwareVersion;
    modules.resize(1);  // before the push, which moves `modules`
    devices.DeviceInfo.push_back(stray);
    EXPECT_EQ(nlohmann::json(got), nlohmann::json(devices));  // device names never travel
}

TEST(TextToObjectsTest, ProviderHeaderSearchesAndListEnds) {
    const std::string provider =
        "class;DevProviderManageInfo;;string;ProviderName;P;string;ProviderVendorName;V;"
        "string;ProviderVersion;1;class[];DeviceInfo;;";
    const std::string tree = R"({"DevProviderManageInfo":{"ProviderName":"P",)"
                             R"("ProviderVendorName":"V","ProviderVersion":"1","DeviceInfo":)";
    const std::pair<std::string, std::string> cases[] = {
        {"string;ProviderName;P;", "{}"},
        {"", "{}"},
        {"class;ToolProviderManageInfo;;class;DevProviderManageInfo;;",
         R"({"DevProviderManageInfo":{"ProviderName":"","ProviderVendorName":"",)"
         R"("ProviderVersion":"","DeviceInfo":[]}})"},
        // A tool provider's tools are searched for like devices.
        {"class;ToolProviderManageInfo;;string;ProviderName;T;class[];ToolInfo;;"
         "string;VendorName;W;string[];ExtendedInfo;e;",
         R"({"ToolProviderManageInfo":{"ProviderName":"T","ProviderVendorName":"",)"
         R"("ProviderVersion":"","ToolInfo":[{"VendorName":"W","ExtendedInfo":"e",)"
         R"("LinkAppInfo":[],"ModuleInfo":[]}]}})"},
        // The first device lacks DeviceId: the search takes the second device's.
        {provider +
             "string;VendorName;A;string;UniqueName;first;class[];LinkAppInfo;;class[];ModuleInfo;;"
             "string;VendorName;B;string;UniqueName;second;string;DeviceId;PCIROOT-8086-10FB;"
             "class[];LinkAppInfo;;class[];ModuleInfo;;",
         tree + R"([{"VendorName":"A","UniqueName":"first","DeviceId":"PCIROOT-8086-10FB",)"
                R"("LinkAppInfo":[],"ModuleInfo":[]},{"VendorName":"B","UniqueName":"second",)"
                R"("DeviceId":"PCIROOT-8086-10FB","LinkAppInfo":[],"ModuleInfo":[]}]}})"},
        // No module header anywhere: the device list ends after the first device.
        {provider + "string;VendorName;A;string;VendorName;B;",
         tree + R"([{"VendorName":"A","LinkAppInfo":[],"ModuleInfo":[]}]}})"},
        // Only the first linked application reaches the tree when a module list follows.
        {provider + "string;VendorName;A;class[];LinkAppInfo;;string;ApplicationName;X;"
                    "string;ApplicationName;Y;string;ExecutePath;/y;class[];ModuleInfo;;"
                    "string;ModuleKind;FW;int;UpdateStatus;-3;class[];RepositoryInfo;;"
                    "string;ApplyKind;Online;bool;Recovery;1;int;Priority;-7;string;DisplayName;D;"
                    "string;HardwareVersion;H;"
                    "string[];ModuleFileName;a!#b;class;DependencyInfoSelf;;string;ProviderName;X;"
                    "string;UpperVendorVersion;9;string;VendorName;V;class;DependencyInfoOther;;",
         tree + R"([{"VendorName":"A","HardwareVersion":"H","LinkAppInfo":[{"ApplicationName":"X",)"
                R"("ExecutePath":"/y"}],)"
                R"("ModuleInfo":[{"ModuleKind":"FW","UpdateStatus":-3,"RepositoryInfo":[{)"
                R"("ApplyKind":"Online","Recovery":false,"Priority":-7,"DisplayName":"D",)"
                R"("HardwareVersion":"H",)"
                R"("ModuleFileName":"a!#b","DependencyInfoSelf":[{"ProviderName":"X",)"
                R"("UpperVendorVersion":"9","VendorName":"V"}],"DependencyInfoOther":[]}]}]}]}})"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Tree(c.first).dump(), c.second) << c.first;
        qel_test::TraceRecorder traces;
        Tree(c.first, /*countBlocks=*/false);
        // Without a provider header the reader returns early, with no exit trace.
        const std::string sig = "void CProviderManageInfo::toObject(char*, IWbemClassObject&)";
        EXPECT_TRUE(traces.Contains("[ENTER] " + sig));
        EXPECT_EQ(traces.Contains("[LEAVE] " + sig), c.second != "{}");
    }
}

}  // namespace
