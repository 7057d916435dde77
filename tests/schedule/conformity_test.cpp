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
    R"("UniqueName":"U","ModuleName":"M")";

typedef void (CUpDownSchedule::*Decoder)(char*, IWbemClassObject&);

class ConformityTest : public ::testing::Test {
  protected:
    CUpDownSchedule codec{"conf"};
};

// Lists and inputs give whole trees, blocks in any order; what a list drops
// or leaves unclosed is freed, as are the trees. A decoder that gives nothing
// ends at once: its step enters but never leaves.
TEST_F(ConformityTest, EntriesGiveWholeTreesAndFreeWhatTheyDrop) {
    const Decoder list = &CUpDownSchedule::toObject2,
                  input = static_cast<Decoder>(&CUpDownSchedule::toObject);
    const std::string
        attr = R"(,"AttrInfo":{"HardwareVersion":"H","Priority":2})",
        link = R"(,"LinkInfo":{"Recovery":true})",
        files = R"(,"FileInfo":[{"Kind":"k","Url":"u","PhysiName":"f","Md5Hash":"h"}]}}]})",
        listTree = R"({"UpdateModuleConformityList":[)" + kEntryTree,
        entry = kList + std::string(kEntry), inputTag = "string;CheckUpdateModuleConformityInput;;",
        plain = "string;ProviderName;Q;string;VendorName;W;";
    // clang-format off
    const std::tuple<Decoder, std::string, std::string> cases[] = {
        {list, entry + kAttr + kLink + kFiles, listTree + attr + link + files},
        {list, entry + kLink + kAttr, listTree + link + attr + "}}]}"},
        {list, entry + kAttr + kEntry, listTree + attr + "}}," + kEntryTree + "}}]}"},
        {list, kEntry, "{}"},  // no list item
        {list, kList, R"({"UpdateModuleConformityList":[]})"},
        {list, entry + kAttr + plain, "{}"},     // an entry without ModuleInfo drops the list
        {list, entry + plain, listTree + "}}]}"},  // string items after the module skipped
        {list, entry + std::string(kAttr).substr(0, 40), listTree + R"(,"AttrInfo":{}}}]})"},
        {input, inputTag + kEntry, "{}"},
        {input, "string;AppKey;k;", R"({"AppKey":"k","CheckUpdateModuleConformityInput":[]})"},
        {input, "string;AppKey;k;" + inputTag + kEntry + kFiles,
         R"({"AppKey":"k","CheckUpdateModuleConformityInput":[)" + kEntryTree + files}};
    // clang-format on
    for (const auto& c : cases) {
        TextBuffer buffer(std::get<1>(c));
        EXPECT_EQ(qel_test::BlocksLeftBy([&] {
                      qel_test::TraceRecorder traces;  // frees what it holds when it ends
                      IWbemClassObject obj;
                      (codec.*std::get<0>(c))(buffer.get(), obj);
                      EXPECT_EQ(TreeText(obj), std::get<2>(c)) << std::get<1>(c);
                      EXPECT_EQ(traces.UnpairedSteps().empty(), std::get<2>(c) != "{}")
                          << std::get<1>(c);
                  }),
                  0)
            << std::get<1>(c);
    }
}

// Blocks read into a module, everything they drop or leave open freed.
TEST_F(ConformityTest, FileLinkAndDepotBlockRules) {
    EXPECT_EQ(
        qel_test::BlocksLeftBy([&] {
            IWbemClassObject module, other;
            // The first file never closes; closing twice lists once; items after the
            // close still go in.
            TextBuffer files(
                "string;Url;early;string;Kind;a;string;Url;b;string;Kind;c;string;Md5Hash;d;"
                "string;Url;after-close;string;Md5Hash;again;string;Other;x;");
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
            // An unknown list drops the whole depot.
            TextBuffer unknown(
                "class[];ShareInfo;;string;ProviderName;A;"
                "string;UpperVendorVersion;1;class[];OtherInfo;;");
            EXPECT_STREQ(codec.SetUpdateDepoInfo(unknown.get(), &other), "class[];OtherInfo;;");
            EXPECT_TRUE(other.empty());
        }),
        0);
}

}  // namespace
