// Update plans, module registrations and record sections into objects.
#include <gtest/gtest.h>

#include <tuple>

#include "CUpDownSchedule.h"
#include "framework/live_blocks.h"
#include "common/object_json.h"
#include "support/text_buffer.h"

namespace {

using qel::TreeText;
using qel_test::TextBuffer;

typedef void (CUpDownSchedule::*Decoder)(char*, IWbemClassObject&);

TEST(PlanDecodersTest, PlansRegistrationsAndSectionsGiveWholeTreesAndFreeThem) {
    auto plans = &CUpDownSchedule::String2UpdatePlans;
    auto regist = &CUpDownSchedule::String2RegisterUpdateModule;
    auto sections = &CUpDownSchedule::String2IWbem;
    const std::string list = R"({"UpdatePlansList":[)";
    // Each decoder with the text it reads and the tree it gives.
    const std::tuple<Decoder, std::string, std::string> cases[] = {
        // The count is not trusted. VendorName and UniqueName in record order, DeviceId missing,
        // DisplayName before UpdatePriority; what the first plan lacks is taken from the second;
        // tags not looked at.
        {plans,
         "class[];X;1;string;ProviderName;P1;string;DependencyName;;string;ProviderName;P2;"
         "string;VendorName;W;string;UniqueName;U;string;DisplayName;D2;string;UpdatePriority;3;"
         "string;DependencyName;N2;",
         list +
             R"({"ProviderName":"P1","VendorName":"W","UniqueName":"U","UpdatePriority":3,)"
             R"("DisplayName":"D2","DependencyName":""},{"ProviderName":"P2","VendorName":"W",)"
             R"("UniqueName":"U","UpdatePriority":3,"DisplayName":"D2","DependencyName":"N2"}]})"},
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
        // The item before the first section is skipped, as are items of other types.
        {sections,
         "string;Before;x;class;S;;bool;A;0;bool;B;false;bool;C;;int;I;7z;"
         "string[];ExtendedInfo;a!#b;long;L;1;class;T;;string;A;a;",
         R"({"S":{"A":true,"B":false,"C":true,"I":7},"T":{"A":"a"}})"},
    };
    CUpDownSchedule codec("plans");
    for (const auto& c : cases) {
        TextBuffer text(std::get<1>(c));
        EXPECT_EQ(qel_test::BlocksLeftBy([&] {
                      IWbemClassObject obj;
                      (codec.*std::get<0>(c))(text.get(), obj);
                      EXPECT_EQ(TreeText(obj), std::get<2>(c)) << std::get<1>(c);
                  }),
                  0);
    }
}

}  // namespace
