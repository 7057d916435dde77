// Update plans, module registrations and record sections into objects.
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

const Objects* Plans(const IWbemClassObject& obj) {
    const Objects* const* list = obj.GetAs<Objects*>("UpdatePlansList");
    return list != nullptr ? *list : nullptr;
}

class PlanDecodersTest : public ::testing::Test {
protected:
    CUpDownSchedule codec{"plans"};

    void DecodePlans(const std::string& text, IWbemClassObject& obj) {
        TextBuffer buffer(text);
        codec.String2UpdatePlans(buffer.get(), obj);
    }
};

TEST_F(PlanDecodersTest, PlansAreDelimitedByProviderNameAndDependencyName) {
    IWbemClassObject obj;
    DecodePlans(
        "class[];X;2;string;ProviderName;P1;string;DisplayName;D1;string;DependencyName;;"
        "string;ProviderName;P2;string;DependencyName;N2;",
        obj);
    const Objects* plans = Plans(obj);
    ASSERT_NE(plans, nullptr);
    ASSERT_EQ(plans->size(), 2u);
    EXPECT_EQ((*plans)[0]->size(), 3u);
    EXPECT_EQ(Text(*(*plans)[0], "DisplayName"), "D1");
    EXPECT_EQ(Text(*(*plans)[0], "DependencyName"), "");
    EXPECT_EQ((*plans)[1]->size(), 2u);
    EXPECT_EQ(Text(*(*plans)[1], "DependencyName"), "N2");
}

TEST_F(PlanDecodersTest, FieldsAreSearchedToTheEndOfTheText) {
    IWbemClassObject obj;
    DecodePlans(
        "class[];X;;string;ProviderName;P1;string;DependencyName;;string;ProviderName;P2;"
        "string;UpdatePriority;3;int;UpdateJudgment;-1;string;DisplayName;D2;"
        "string;DependencyName;N2;",
        obj);
    const Objects& plans = *Plans(obj);
    ASSERT_EQ(plans.size(), 2u);
    EXPECT_EQ(Text(*plans[0], "DisplayName"), "D2");  // taken from the later plan
    EXPECT_EQ(*plans[0]->GetAs<int>("UpdatePriority"), 3);  // tag not looked at
    EXPECT_EQ(*plans[1]->GetAs<int>("UpdateJudgment"), -1);
}

TEST_F(PlanDecodersTest, PlanListBoundaries) {
    struct Case {
        const char* text;
        int plans;  // -1: no entry
    };
    const Case cases[] = {
        {"string;A;x;", -1},
        {"", -1},
        {"class[];X;0;", 0},
        {"class[];X;0;string;Other;1;", 0},
        {"class[];X;;string;ProviderName;P;", 1},  // no DependencyName: the last plan
        {"class[];X;;string;ProviderName;P;string;DependencyName;d;string;ProviderName", 1},
    };
    for (const Case& c : cases) {
        IWbemClassObject obj;
        DecodePlans(c.text, obj);
        const Objects* plans = Plans(obj);
        if (c.plans < 0) {
            EXPECT_TRUE(obj.empty()) << c.text;
        } else {
            ASSERT_NE(plans, nullptr) << c.text;
            EXPECT_EQ(static_cast<int>(plans->size()), c.plans) << c.text;
        }
    }
}

TEST_F(PlanDecodersTest, ModuleRegistration) {
    qel_test::TraceRecorder traces;
    const std::string module =
        "string;VendorName;V;string;UniqueName;U;string;ModuleKind;M;string;VendorVersion;1.0;"
        "string;ModulePath;/p;";
    TextBuffer text("string;AppKey;K;class[];UpdateModuleRegistInfo;;" + module +
                    "string;VendorName;W;string;UniqueName;U2;string;ModulePath;/q;");
    IWbemClassObject obj;
    codec.String2RegisterUpdateModule(text.get(), obj);
    EXPECT_EQ(Text(obj, "AppKey"), "K");
    const Objects* modules = obj.GetAs<Objects>("UpdateModuleRegistInfo");
    ASSERT_NE(modules, nullptr);
    ASSERT_EQ(modules->size(), 2u);
    EXPECT_EQ(Text(*(*modules)[0], "ModulePath"), "/p");
    EXPECT_EQ((*modules)[1]->size(), 5u);
    EXPECT_EQ(Text(*(*modules)[1], "ModuleKind"), "");  // unmatched: empty
    EXPECT_EQ(Text(*(*modules)[1], "VendorVersion"), "");
    EXPECT_EQ(Text(*(*modules)[1], "ModulePath"), "/q");
    EXPECT_TRUE(traces.Contains(
        "[LEAVE] void CUpDownSchedule::String2RegisterUpdateModule(char*, IWbemClassObject&)"));
}

TEST_F(PlanDecodersTest, ModuleRegistrationEarlyReturns) {
    qel_test::TraceRecorder traces;
    IWbemClassObject none;
    TextBuffer noKey("class[];UpdateModuleRegistInfo;;string;VendorName;V;");
    traces.Clear();
    codec.String2RegisterUpdateModule(noKey.get(), none);
    EXPECT_TRUE(none.empty());
    EXPECT_EQ(traces.Texts(),
              std::vector<std::string>{"[ENTER] void CUpDownSchedule::String2RegisterUpdateModule("
                                       "char*, IWbemClassObject&)"});
    IWbemClassObject keyOnly;
    TextBuffer noList("string;AppKey;K;string;VendorName;V;");
    codec.String2RegisterUpdateModule(noList.get(), keyOnly);
    EXPECT_EQ(keyOnly.size(), 1u);
}

TEST_F(PlanDecodersTest, SectionsBecomeOneObjectEach) {
    CVELMORA_DownloadSetting setting;
    CVELMORA_DownloadSchedule schedule;
    std::string text;
    codec.toString(setting, schedule, text);
    TextBuffer buffer(text);
    IWbemClassObject obj;
    codec.String2IWbem(buffer.get(), obj);
    ASSERT_EQ(obj.size(), 2u);
    EXPECT_EQ(obj.begin()->first, "DownloadSchedule");
    EXPECT_EQ((*obj.GetAs<IWbemClassObject*>("DownloadSchedule"))->size(), 5u);
    EXPECT_EQ((*obj.GetAs<IWbemClassObject*>("DownloadSetting"))->size(), 11u);
}

TEST_F(PlanDecodersTest, SectionItemRules) {
    qel_test::TraceRecorder traces;
    TextBuffer text(
        "string;Before;x;class;S;;bool;A;0;bool;B;false;bool;C;;int;I;7z;"
        "string[];ExtendedInfo;a!#b;long;L;1;");
    IWbemClassObject obj;
    codec.String2IWbem(text.get(), obj);
    ASSERT_EQ(obj.size(), 1u);  // the item before the first section has no object
    IWbemClassObject* section = *obj.GetAs<IWbemClassObject*>("S");
    EXPECT_TRUE(*section->GetAs<bool>("A"));
    EXPECT_FALSE(*section->GetAs<bool>("B"));
    EXPECT_TRUE(*section->GetAs<bool>("C"));
    EXPECT_EQ(*section->GetAs<int>("I"), 7);
    EXPECT_EQ(section->size(), 4u);
    const std::string sig = "virtual void CUpDownSchedule::String2IWbem(char*, IWbemClassObject&) ";
    qel_test::TraceLine line;
    ASSERT_TRUE(traces.Find(sig + "unsupported type : ExtendedInfo", &line));
    EXPECT_EQ(line.source, "som");
    EXPECT_TRUE(traces.Contains(sig + "unsupported type : L"));
    codec.String2IWbem(nullptr, obj);
    EXPECT_TRUE(traces.Contains(sig + "parameter is NULL"));
    IWbemClassObject empty;
    TextBuffer noSection("string;A;x;");
    codec.String2IWbem(noSection.get(), empty);
    EXPECT_TRUE(empty.empty());
}

}  // namespace
