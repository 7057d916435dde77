// Update plans, module registrations and record sections into objects.
#include <gtest/gtest.h>

#include "CUpDownSchedule.h"
#include "framework/live_blocks.h"
#include "common/object_json.h"
#include "support/text_buffer.h"
#include "support/trace_recorder.h"

namespace {

using qel::TreeText;
using qel_test::TextBuffer;

// Each decoder with the text it reads and the tree it gives.
struct Case {
    void (CUpDownSchedule::*decode)(char*, IWbemClassObject&);
    std::string text;
    std::string tree;
};

TEST(PlanDecodersTest, PlansRegistrationsSectionsAndTheirTraces) {
    auto plans = &CUpDownSchedule::String2UpdatePlans;
    auto regist = &CUpDownSchedule::String2RegisterUpdateModule;
    auto sections = &CUpDownSchedule::String2IWbem;
    const std::string list = R"({"UpdatePlansList":[)";
    const Case cases[] = {
        {plans,
         "class[];X;2;string;ProviderName;P1;string;DisplayName;D1;string;DependencyName;;"
         "string;ProviderName;P2;string;DependencyName;N2;",
         list + R"({"ProviderName":"P1","DisplayName":"D1","DependencyName":""},)"
                R"({"ProviderName":"P2","DependencyName":"N2"}]})"},
        // A field missing from the first plan is taken from the second; tags not looked at.
        {plans,
         "class[];X;;string;ProviderName;P1;string;DependencyName;;string;ProviderName;P2;"
         "string;UpdatePriority;3;string;DisplayName;D2;string;DependencyName;N2;",
         list + R"({"ProviderName":"P1","UpdatePriority":3,"DisplayName":"D2",)"
                R"("DependencyName":""},{"ProviderName":"P2","UpdatePriority":3,)"
                R"("DisplayName":"D2","DependencyName":"N2"}]})"},
        // clang-format off
        {plans, "class[];X;0;", list + "]}"}, {plans, "class[];X;0;string;Other;1;", list + "]}"},
        {plans, "class[];X;;string;ProviderName;P;", list + R"({"ProviderName":"P"}]})"},
        {plans, "string;A;x;", "{}"}, {plans, "", "{}"},
        // clang-format on
        {regist,
         "string;AppKey;K;class[];UpdateModuleRegistInfo;;string;VendorName;V;"
         "string;UniqueName;U;string;ModuleKind;M;string;VendorVersion;1.0;string;ModulePath;/p;"
         "string;VendorName;W;string;UniqueName;U2;string;ModulePath;/q;",
         R"({"AppKey":"K","UpdateModuleRegistInfo":[{"VendorName":"V","UniqueName":"U",)"
         R"("ModuleKind":"M","VendorVersion":"1.0","ModulePath":"/p"},{"VendorName":"W",)"
         R"("UniqueName":"U2","ModuleKind":"","VendorVersion":"","ModulePath":"/q"}]})"},
        // clang-format off
        {regist, "class[];UpdateModuleRegistInfo;;string;VendorName;V;", "{}"},
        {regist, "string;AppKey;K;string;VendorName;V;", R"({"AppKey":"K"})"},
        // clang-format on
        // The item before the first section is skipped.
        {sections,
         "string;Before;x;class;S;;bool;A;0;bool;B;false;bool;C;;int;I;7z;"
         "string[];ExtendedInfo;a!#b;long;L;1;",
         R"({"S":{"A":true,"B":false,"C":true,"I":7}})"},
    };
    CUpDownSchedule codec("plans");
    for (const Case& c : cases) {
        TextBuffer text(c.text);
        EXPECT_EQ(qel_test::BlocksLeftBy([&] {
                      IWbemClassObject obj;
                      (codec.*c.decode)(text.get(), obj);
                      EXPECT_EQ(TreeText(obj), c.tree) << c.text;
                  }),
                  0);
    }
    qel_test::TraceRecorder traces;  // keeps blocks: after the counted runs
    TextBuffer noKey("class[];UpdateModuleRegistInfo;;string;VendorName;V;");
    IWbemClassObject none;
    codec.String2RegisterUpdateModule(noKey.get(), none);
    EXPECT_EQ(traces.Texts(), std::vector<std::string>{"[ENTER] void CUpDownSchedule::"
                                                       "String2RegisterUpdateModule(char*, "
                                                       "IWbemClassObject&)"});
    std::string text;
    codec.toString(CVELMORA_DownloadSetting(), CVELMORA_DownloadSchedule(), text);
    TextBuffer written(text);
    IWbemClassObject obj;
    codec.String2IWbem(written.get(), obj);
    ASSERT_EQ(obj.size(), 2u);
    EXPECT_EQ((*obj.GetAs<IWbemClassObject*>("DownloadSchedule"))->size(), 5u);
    EXPECT_EQ((*obj.GetAs<IWbemClassObject*>("DownloadSetting"))->size(), 11u);
    TextBuffer unsupported("class;S;;string[];ExtendedInfo;a!#b;");
    codec.String2IWbem(unsupported.get(), obj);
    const std::string sig = "virtual void CUpDownSchedule::String2IWbem(char*, IWbemClassObject&) ";
    qel_test::TraceLine line;
    ASSERT_TRUE(traces.Find(sig + "unsupported type : ExtendedInfo", &line));
    EXPECT_EQ(line.source, "som");
    codec.String2IWbem(nullptr, obj);
    EXPECT_TRUE(traces.Contains(sig + "parameter is NULL"));
}

}  // namespace
