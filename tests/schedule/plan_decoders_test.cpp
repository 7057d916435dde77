// Update plans, module registrations and record sections into objects.
#include <gtest/gtest.h>

#include "CUpDownSchedule.h"
#include "support/text_buffer.h"
#include "support/trace_recorder.h"

namespace {

using qel_test::TextBuffer;
typedef std::vector<IWbemClassObject*> Objects;

// The entries of an object as "name=value" text, nested objects summarised.
std::string Dump(const IWbemClassObject& obj) {
    std::string out;
    for (const auto& entry : obj) {
        out += entry.first + "=";
        if (const auto* s = boost::any_cast<std::string>(&entry.second))
            out += *s;
        if (const auto* i = boost::any_cast<int>(&entry.second))
            out += std::to_string(*i);
        if (const auto* b = boost::any_cast<bool>(&entry.second))
            out += *b ? "true" : "false";
        out += " ";
    }
    return out;
}

TEST(PlanDecodersTest, PlansAreDelimitedAndSearchedToTheEnd) {
    const std::pair<const char*, std::vector<std::string>> cases[] = {
        {"class[];X;2;string;ProviderName;P1;string;DisplayName;D1;string;DependencyName;;"
         "string;ProviderName;P2;string;DependencyName;N2;",
         {"ProviderName=P1 DisplayName=D1 DependencyName= ", "ProviderName=P2 DependencyName=N2 "}},
        // A field missing from the first plan is taken from the second; tags not looked at.
        {"class[];X;;string;ProviderName;P1;string;DependencyName;;string;ProviderName;P2;"
         "string;UpdatePriority;3;string;DisplayName;D2;string;DependencyName;N2;",
         {"ProviderName=P1 UpdatePriority=3 DisplayName=D2 DependencyName= ",
          "ProviderName=P2 UpdatePriority=3 DisplayName=D2 DependencyName=N2 "}},
        {"class[];X;0;", {}},
        {"class[];X;0;string;Other;1;", {}},
        {"class[];X;;string;ProviderName;P;", {"ProviderName=P "}},  // without DependencyName: last
    };
    CUpDownSchedule codec("plans");
    for (const auto& c : cases) {
        TextBuffer text(c.first);
        IWbemClassObject obj;
        codec.String2UpdatePlans(text.get(), obj);
        const Objects* const* plans = obj.GetAs<Objects*>("UpdatePlansList");
        ASSERT_NE(plans, nullptr) << c.first;
        std::vector<std::string> got;
        for (IWbemClassObject* plan : **plans)
            got.push_back(Dump(*plan));
        EXPECT_EQ(got, c.second) << c.first;
    }
    for (const char* none : {"string;A;x;", ""}) {
        TextBuffer text(none);
        IWbemClassObject obj;
        codec.String2UpdatePlans(text.get(), obj);
        EXPECT_TRUE(obj.empty());
    }
}

TEST(PlanDecodersTest, ModuleRegistration) {
    qel_test::TraceRecorder traces;
    CUpDownSchedule codec("plans");
    TextBuffer text(
        "string;AppKey;K;class[];UpdateModuleRegistInfo;;string;VendorName;V;string;UniqueName;U;"
        "string;ModuleKind;M;string;VendorVersion;1.0;string;ModulePath;/p;"
        "string;VendorName;W;string;UniqueName;U2;string;ModulePath;/q;");
    IWbemClassObject obj;
    codec.String2RegisterUpdateModule(text.get(), obj);
    EXPECT_EQ(*obj.GetAs<std::string>("AppKey"), "K");
    const Objects& modules = *obj.GetAs<Objects>("UpdateModuleRegistInfo");
    ASSERT_EQ(modules.size(), 2u);
    EXPECT_EQ(Dump(*modules[0]),
              "VendorName=V UniqueName=U ModuleKind=M VendorVersion=1.0 ModulePath=/p ");
    EXPECT_EQ(Dump(*modules[1]),  // unmatched fields are added empty
              "VendorName=W UniqueName=U2 ModuleKind= VendorVersion= ModulePath=/q ");
    traces.Clear();
    TextBuffer noKey("class[];UpdateModuleRegistInfo;;string;VendorName;V;");
    IWbemClassObject none;
    codec.String2RegisterUpdateModule(noKey.get(), none);
    EXPECT_TRUE(none.empty());
    EXPECT_EQ(traces.Texts(), std::vector<std::string>{"[ENTER] void CUpDownSchedule::"
                                                       "String2RegisterUpdateModule(char*, "
                                                       "IWbemClassObject&)"});
    TextBuffer noList("string;AppKey;K;string;VendorName;V;");
    codec.String2RegisterUpdateModule(noList.get(), none);
    EXPECT_EQ(none.size(), 1u);
}

TEST(PlanDecodersTest, SectionsBecomeOneObjectEach) {
    qel_test::TraceRecorder traces;
    CUpDownSchedule codec("plans");
    std::string text;
    codec.toString(CVELMORA_DownloadSetting(), CVELMORA_DownloadSchedule(), text);
    TextBuffer written(text);
    IWbemClassObject obj;
    codec.String2IWbem(written.get(), obj);
    ASSERT_EQ(obj.size(), 2u);
    EXPECT_EQ((*obj.GetAs<IWbemClassObject*>("DownloadSchedule"))->size(), 5u);
    EXPECT_EQ((*obj.GetAs<IWbemClassObject*>("DownloadSetting"))->size(), 11u);
    TextBuffer rules(
        "string;Before;x;class;S;;bool;A;0;bool;B;false;bool;C;;int;I;7z;"
        "string[];ExtendedInfo;a!#b;long;L;1;");
    IWbemClassObject sections;
    codec.String2IWbem(rules.get(), sections);
    ASSERT_EQ(sections.size(), 1u);  // the item before the first section is skipped
    EXPECT_EQ(Dump(**sections.GetAs<IWbemClassObject*>("S")), "A=true B=false C=true I=7 ");
    const std::string sig = "virtual void CUpDownSchedule::String2IWbem(char*, IWbemClassObject&) ";
    qel_test::TraceLine line;
    ASSERT_TRUE(traces.Find(sig + "unsupported type : ExtendedInfo", &line));
    EXPECT_EQ(line.source, "som");
    codec.String2IWbem(nullptr, obj);
    EXPECT_TRUE(traces.Contains(sig + "parameter is NULL"));
}

}  // namespace
