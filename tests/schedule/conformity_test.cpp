// Conformity trees: blocks, lists, early ends and dropped objects.
#include <gtest/gtest.h>

#include <tuple>

#include "CUpDownSchedule.h"
#include "framework/live_blocks.h"
#include "common/object_json.h"
#include "support/text_buffer.h"
#include "support/trace_recorder.h"

namespace {

using qel::TreeText;
using qel_test::TextBuffer;
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

typedef void (CUpDownSchedule::*Decoder)(char*, IWbemClassObject&);

class ConformityTest : public ::testing::Test {
  protected:
    CUpDownSchedule codec{"conf"};
};

// Lists and inputs give whole trees, blocks in any order.
TEST_F(ConformityTest, EntriesGiveWholeTrees) {
    const Decoder list = &CUpDownSchedule::toObject2,
                  input = static_cast<Decoder>(&CUpDownSchedule::toObject);
    const std::string
        attr = R"("AttrInfo":{"HardwareVersion":"H","Priority":2})",
        link = R"("LinkInfo":{"Recovery":true})",
        files = R"("FileInfo":[{"Kind":"k","Url":"u","PhysiName":"f","Md5Hash":"h"}]}}]})",
        listTree = R"({"UpdateModuleConformityList":[)" + kEntryTree,
        inputTag = "string;CheckUpdateModuleConformityInput;;";
    // clang-format off
    const std::tuple<Decoder, std::string, std::string> cases[] = {
        {list, kList + std::string(kEntry) + kAttr + kLink + kFiles,
         listTree + attr + "," + link + "," + files},
        {list, kList + std::string(kEntry) + kLink + kAttr, listTree + link + "," + attr + "}}]}"},
        {input, inputTag + kEntry, "{}"},
        {input, "string;AppKey;k;", R"({"AppKey":"k","CheckUpdateModuleConformityInput":[]})"},
        {input, "string;AppKey;k;" + inputTag + kEntry + kFiles,
         R"({"AppKey":"k","CheckUpdateModuleConformityInput":[)" + kEntryTree + files}};
    // clang-format on
    for (const auto& c : cases) {
        TextBuffer buffer(std::get<1>(c));
        IWbemClassObject obj;
        qel_test::TraceRecorder traces;
        (codec.*std::get<0>(c))(buffer.get(), obj);
        EXPECT_EQ(TreeText(obj), std::get<2>(c)) << std::get<1>(c);
        // Every step leaves as it entered, but an input without its key,
        // which ends the decoding at once.
        EXPECT_EQ(traces.UnpairedSteps().empty(), std::get<2>(c) != "{}") << std::get<1>(c);
    }
}

TEST_F(ConformityTest, FileLinkAndDepotBlockRules) {
    IWbemClassObject module;
    const std::string fileText =
        "string;Url;early;string;Kind;a;string;Url;b;string;Kind;c;string;Md5Hash;d;"
        "string;Url;after-close;string;Md5Hash;again;string;Other;x;";
    TextBuffer files(fileText);
    // The first file never closes (and is freed); closing twice lists once;
    // items after the close still go in.
    EXPECT_STREQ(codec.SetUpdateFileInfo(files.get(), &module), "string;Other;x;");
    EXPECT_EQ(qel_test::BlocksLeftBy([&] {
                  IWbemClassObject scratch;
                  codec.SetUpdateFileInfo(TextBuffer(fileText).get(), &scratch);
              }),
              0);
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

TEST_F(ConformityTest, ListLevelRules) {
    const std::string list = kList;
    const std::string depot =
        "class;DepoInfo;;class[];ShareInfo;;string;ProviderName;A;string;UpperVendorVersion;1;";
    // What the list entry holds afterwards: -1 for no entry at all.
    const std::string plain = "string;ProviderName;Q;string;VendorName;W;";
    // clang-format off
    const std::pair<std::string, int> lists[] = {
        {kEntry, -1}, {list, 0}, {list + kEntry + kAttr + kEntry, 2},  // -1: no list item
        {list + kEntry + kAttr + plain, -1},                          // no ModuleInfo
        {list + kEntry + plain, 1},                                   // string items skipped
        {list + kEntry + std::string(kAttr).substr(0, 40), 1},        // cut inside a block
        {list + kEntry + depot + kEntry, 1}};  // a depot swallows the next entry's ProviderName
    // clang-format on
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
}

}  // namespace
