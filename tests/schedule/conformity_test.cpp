// Conformity trees: blocks, lists, early ends and dropped objects.
#include <gtest/gtest.h>

#include "CUpDownSchedule.h"
#include "framework/live_blocks.h"
#include "framework/object_json.h"
#include "support/text_buffer.h"
#include "support/trace_recorder.h"

namespace {

using qel_test::TextBuffer;
using qel_test::TreeText;
typedef std::vector<IWbemClassObject*> Objects;

const char kList[] = "string;UpdateModuleConformityList;;";
const char kEntry[] =
    "string;ProviderName;P;string;VendorName;V;string;UpdateModuleKind;K;class;ModuleInfo;;"
    "string;UniqueName;U;string;ModuleName;M;";
const char kAttr[] = "class;AttrInfo;;string;HardwareVersion;H;int;Priority;2;";
const char kLink[] = "class;LinkInfo;;bool;Recovery;true;";
const char kFiles[] =
    "class[];FileInfo;;string;Kind;k;string;Url;u;string;PhysiName;f;string;Md5Hash;h;";
const std::string kEntryTree =
    R"({"ProviderName":"P","VendorName":"V","UpdateModuleKind":"K","ModuleInfo":{)"
    R"("UniqueName":"U","ModuleName":"M",)";

class ConformityTest : public ::testing::Test {
  protected:
    CUpDownSchedule codec{"conf"};

    std::string List(const std::string& text) {
        TextBuffer buffer(text);
        IWbemClassObject obj;
        codec.toObject2(buffer.get(), obj);
        return TreeText(obj);
    }
};

TEST_F(ConformityTest, EntriesGiveWholeTreesWithBlocksInAnyOrder) {
    const std::string attr = R"("AttrInfo":{"HardwareVersion":"H","Priority":2})";
    const std::string link = R"("LinkInfo":{"Recovery":true})";
    const std::pair<std::string, std::string> cases[] = {
        {kList + std::string(kEntry) + kAttr + kLink + kFiles,
         kEntryTree + attr + "," + link +
             R"(,"FileInfo":[{"Kind":"k","Url":"u","PhysiName":"f","Md5Hash":"h"}]}}]})"},
        {kList + std::string(kEntry) + kLink + kAttr, kEntryTree + link + "," + attr + "}}]}"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(List(c.first), R"({"UpdateModuleConformityList":[)" + c.second) << c.first;
}

TEST_F(ConformityTest, FileLinkAndDepotBlockRules) {
    IWbemClassObject module;
    TextBuffer files(
        "string;Url;early;string;Kind;a;string;Url;b;string;Kind;c;string;Md5Hash;d;"
        "string;Url;after-close;string;Md5Hash;again;string;Other;x;");
    // The first file never closes; closing twice lists once; items after
    // the close still go in.
    EXPECT_STREQ(codec.SetUpdateFileInfo(files.get(), &module), "string;Other;x;");
    EXPECT_EQ(module.GetAs<Objects>("FileInfo")->at(0)->size(), 4u);
    TextBuffer links("bool;Recovery;1;string;RebootAfterUpdate;true;");
    codec.SetUpdateLinkInfo(links.get(), &module);
    TextBuffer depot(
        "class[];ShareInfo;;string;ProviderName;A;string;UpperVendorVersion;1;"
        "class[];SimuInfo;;string;ProviderName;B;string;UpperVendorVersion;2;"
        "string;ProviderName;open;");  // the reference opened last never closes
    codec.SetUpdateDepoInfo(depot.get(), &module);
    EXPECT_EQ(TreeText(module),
              R"({"FileInfo":[{"Kind":"c","Md5Hash":"again","Url":"after-close"}],)"
              R"("LinkInfo":{"Recovery":false,"RebootAfterUpdate":"true"},"DepoInfo":{)"
              R"("ShareInfo":[{"ProviderName":"A","UpperVendorVersion":"1"}],)"
              R"("SimuInfo":[{"ProviderName":"B","UpperVendorVersion":"2"}]}})");

    IWbemClassObject other;
    TextBuffer unknown(
        "class[];ShareInfo;;string;ProviderName;A;string;UpperVendorVersion;1;class[];OtherInfo;;");
    EXPECT_EQ(qel_test::BlocksLeftBy([&] { codec.SetUpdateDepoInfo(unknown.get(), &other); }), 0);
    qel_test::TraceRecorder traces;
    EXPECT_STREQ(codec.SetUpdateDepoInfo(unknown.get(), &other), "class[];OtherInfo;;");
    EXPECT_TRUE(other.empty());  // dropped, and freed
    EXPECT_FALSE(traces.Contains(
        "[LEAVE] char* CUpDownSchedule::SetUpdateDepoInfo(char*, IWbemClassObject*)"));
}

TEST_F(ConformityTest, ListAndInputLevelRules) {
    const std::string list = kList;
    const std::string input = "string;AppKey;k;string;CheckUpdateModuleConformityInput;;";
    const std::string depot =
        "class;DepoInfo;;class[];ShareInfo;;string;ProviderName;A;string;UpperVendorVersion;1;";
    // What the list entry holds afterwards: -1 for no entry at all.
    const std::pair<std::string, int> lists[] = {
        {kEntry, -1},  // no list item
        {list, 0},
        {list + kEntry + kAttr + kEntry, 2},
        {list + kEntry + kAttr + "string;ProviderName;Q;string;VendorName;W;",
         -1},                                                               // no ModuleInfo
        {list + kEntry + "string;ProviderName;Q;string;VendorName;W;", 1},  // string items skipped
        {list + kEntry + std::string(kAttr).substr(0, 40), 1},              // cut inside a block
        {list + kEntry + depot + kEntry, 1},  // a depot swallows the next entry's ProviderName
    };
    for (const auto& c : lists) {
        TextBuffer buffer(c.first);
        // Dropped and unclosed objects are freed, as are the trees.
        EXPECT_EQ(qel_test::BlocksLeftBy([&] {
                      IWbemClassObject obj;
                      codec.toObject2(buffer.get(), obj);
                      const Objects* entries = obj.GetAs<Objects>("UpdateModuleConformityList");
                      EXPECT_EQ(entries ? static_cast<int>(entries->size()) : -1, c.second);
                  }),
                  0)
            << c.first;
    }
    const std::pair<std::string, std::string> inputs[] = {
        {std::string("string;CheckUpdateModuleConformityInput;;") + kEntry, "{}"},
        {"string;AppKey;k;", R"({"AppKey":"k","CheckUpdateModuleConformityInput":[]})"},
        {input + kEntry + kFiles,
         R"({"AppKey":"k","CheckUpdateModuleConformityInput":[)" + kEntryTree +
             R"("FileInfo":[{"Kind":"k","Url":"u","PhysiName":"f","Md5Hash":"h"}]}}]})"},
    };
    for (const auto& c : inputs) {
        TextBuffer buffer(c.first);
        IWbemClassObject obj;
        codec.toObject(buffer.get(), obj);
        EXPECT_EQ(TreeText(obj), c.second) << c.first;
    }
}

}  // namespace
