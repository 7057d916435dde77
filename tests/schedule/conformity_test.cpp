// Conformity trees: blocks, lists, early ends and dropped objects.
#include <gtest/gtest.h>

#include "CUpDownSchedule.h"
#include "support/text_buffer.h"
#include "support/trace_recorder.h"

namespace {

using qel_test::TextBuffer;
typedef std::vector<IWbemClassObject*> Objects;

std::string Text(const IWbemClassObject& obj, const char* name) {
    const std::string* value = obj.GetAs<std::string>(name);
    return value != nullptr ? *value : "<absent>";
}

IWbemClassObject& Child(const IWbemClassObject& obj, const char* name) {
    return **obj.GetAs<IWbemClassObject*>(name);
}

const char kEntry[] =
    "string;ProviderName;P;string;VendorName;V;string;UpdateModuleKind;K;class;ModuleInfo;;"
    "string;UniqueName;U;string;ModuleName;M;";
const char kAttr[] = "class;AttrInfo;;string;HardwareVersion;H;int;Priority;2;";
const char kLink[] = "class;LinkInfo;;bool;Recovery;true;";
const char kFiles[] =
    "class[];FileInfo;;string;Kind;k;string;Url;u;string;PhysiName;f;string;Md5Hash;h;";

class ConformityTest : public ::testing::Test {
  protected:
    CUpDownSchedule codec{"conf"};

    void List(const std::string& text, IWbemClassObject& obj) {
        TextBuffer buffer(text);
        codec.toObject2(buffer.get(), obj);
    }
};

TEST_F(ConformityTest, DocumentedEntryGivesTheWholeTree) {
    IWbemClassObject obj;
    List(std::string("string;UpdateModuleConformityList;;") + kEntry + kAttr + kLink + kFiles, obj);
    const Objects* list = obj.GetAs<Objects>("UpdateModuleConformityList");
    ASSERT_NE(list, nullptr);
    ASSERT_EQ(list->size(), 1u);
    const IWbemClassObject& entry = *(*list)[0];
    EXPECT_EQ(Text(entry, "VendorName"), "V");
    EXPECT_EQ(Text(entry, "UpdateModuleKind"), "K");
    const IWbemClassObject& module = Child(entry, "ModuleInfo");
    EXPECT_EQ(Text(module, "UniqueName"), "U");
    EXPECT_EQ(Text(module, "DispName"), "<absent>");
    EXPECT_EQ(Text(Child(module, "AttrInfo"), "HardwareVersion"), "H");
    EXPECT_EQ(*Child(module, "AttrInfo").GetAs<int>("Priority"), 2);
    EXPECT_TRUE(*Child(module, "LinkInfo").GetAs<bool>("Recovery"));
    const Objects& files = *module.GetAs<Objects>("FileInfo");
    ASSERT_EQ(files.size(), 1u);
    EXPECT_EQ(Text(*files[0], "Md5Hash"), "h");
    EXPECT_EQ(files[0]->size(), 4u);
}

TEST_F(ConformityTest, BlocksComeInAnyOrder) {
    IWbemClassObject obj;
    List(std::string("string;UpdateModuleConformityList;;") + kEntry + kLink + kAttr, obj);
    const IWbemClassObject& module =
        Child(*(*obj.GetAs<Objects>("UpdateModuleConformityList"))[0], "ModuleInfo");
    std::vector<std::string> names;
    for (const auto& entry : module)
        names.push_back(entry.first);
    EXPECT_EQ(names,
              (std::vector<std::string>{"UniqueName", "ModuleName", "LinkInfo", "AttrInfo"}));
}

TEST_F(ConformityTest, FileAndLinkBlockRules) {
    IWbemClassObject module;
    TextBuffer files(
        "string;Url;early;string;Kind;a;string;Url;b;string;Kind;c;string;Md5Hash;d;"
        "string;Url;after-close;string;Md5Hash;again;string;Other;x;");
    char* stop = codec.SetUpdateFileInfo(files.get(), &module);
    EXPECT_EQ(std::string(stop), "string;Other;x;");
    const Objects& list = *module.GetAs<Objects>("FileInfo");
    ASSERT_EQ(list.size(), 1u);  // the first file never closed; closing twice lists once
    EXPECT_EQ(Text(*list[0], "Kind"), "c");
    EXPECT_EQ(list[0]->size(), 4u);  // Kind, Md5Hash, Url (after close), Md5Hash (again)
    TextBuffer links("bool;Recovery;1;string;RebootAfterUpdate;true;");
    codec.SetUpdateLinkInfo(links.get(), &module);
    EXPECT_FALSE(*Child(module, "LinkInfo").GetAs<bool>("Recovery"));
    EXPECT_EQ(Text(Child(module, "LinkInfo"), "RebootAfterUpdate"), "true");
}

TEST_F(ConformityTest, DepotBlocks) {
    IWbemClassObject module;
    TextBuffer depot(
        "class[];ShareInfo;;string;ProviderName;A;string;UpperVendorVersion;1;"
        "class[];SimuInfo;;string;ProviderName;B;string;UpperVendorVersion;2;"
        "string;ProviderName;open;");
    codec.SetUpdateDepoInfo(depot.get(), &module);
    const IWbemClassObject& info = Child(module, "DepoInfo");
    ASSERT_EQ(info.GetAs<Objects>("ShareInfo")->size(), 1u);
    const Objects& simu = *info.GetAs<Objects>("SimuInfo");
    ASSERT_EQ(simu.size(), 1u);  // the reference opened last never closes
    EXPECT_EQ(Text(*simu[0], "ProviderName"), "B");

    qel_test::TraceRecorder traces;
    IWbemClassObject other;
    TextBuffer unknown(
        "class[];ShareInfo;;string;ProviderName;A;string;UpperVendorVersion;1;class[];OtherInfo;;");
    char* stop = codec.SetUpdateDepoInfo(unknown.get(), &other);
    EXPECT_EQ(std::string(stop), "class[];OtherInfo;;");
    EXPECT_TRUE(other.empty());  // dropped, and freed
    EXPECT_FALSE(traces.Contains(
        "[LEAVE] char* CUpDownSchedule::SetUpdateDepoInfo(char*, IWbemClassObject*)"));
}

TEST_F(ConformityTest, ListAndInputLevelRules) {
    const std::string list = "string;UpdateModuleConformityList;;";
    const std::string input = "string;AppKey;k;string;CheckUpdateModuleConformityInput;;";
    // What the list entry holds afterwards: -1 for no entry at all.
    const std::pair<std::string, int> lists[] = {
        {kEntry, -1},  // no list item
        {list, 0},
        {list + kEntry + kAttr + kEntry, 2},
        {list + kEntry + kAttr + "string;ProviderName;Q;string;VendorName;W;",
         -1},                                                               // no ModuleInfo
        {list + kEntry + "string;ProviderName;Q;string;VendorName;W;", 1},  // string items skipped
        {list + kEntry + std::string(kAttr).substr(0, 40), 1},              // cut inside a block
    };
    for (const auto& c : lists) {
        IWbemClassObject obj;
        List(c.first, obj);
        const Objects* entries = obj.GetAs<Objects>("UpdateModuleConformityList");
        EXPECT_EQ(entries == nullptr ? -1 : static_cast<int>(entries->size()), c.second) << c.first;
    }
    const std::pair<std::string, std::string> inputs[] = {
        {std::string("string;CheckUpdateModuleConformityInput;;") + kEntry, ""},
        {"string;AppKey;k;", "AppKey CheckUpdateModuleConformityInput:0"},
        {input + kEntry + kFiles, "AppKey CheckUpdateModuleConformityInput:1"},
    };
    for (const auto& c : inputs) {
        qel_test::TextBuffer buffer(c.first);
        IWbemClassObject obj;
        codec.toObject(buffer.get(), obj);
        std::string got;
        for (const auto& entry : obj) {
            got += got.empty() ? "" : " ";
            got += entry.first;
            if (const auto* v = boost::any_cast<Objects>(&entry.second))
                got += ":" + std::to_string(v->size());
        }
        EXPECT_EQ(got, c.second) << c.first;
    }
}

TEST_F(ConformityTest, DepotFollowedByTheNextEntrySwallowsItsProviderName) {
    IWbemClassObject obj;
    List(std::string("string;UpdateModuleConformityList;;") + kEntry +
             "class;DepoInfo;;class[];ShareInfo;;string;ProviderName;A;"
             "string;UpperVendorVersion;1;" +
             kEntry,
         obj);
    const Objects& entries = *obj.GetAs<Objects>("UpdateModuleConformityList");
    EXPECT_EQ(entries.size(), 1u);
}

}  // namespace
