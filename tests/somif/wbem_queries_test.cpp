// The WBEM query entry points: bodies, decoding and output-object rules.
#include <gtest/gtest.h>

#include <memory>

#include "CSomIf.h"
#include "provider_info/plain_text.h"
#include "support/fake_som_service.h"
#include "support/sample_providers.h"

namespace {

using qel_test::Action;
using qel_test::FakeSomService;
typedef std::vector<IWbemClassObject*> Objects;

class WbemQueriesTest : public ::testing::Test {
  protected:
    qel_test::TempSysroot root;
    FakeSomService service{root, 1};
    CSomIf som{"wbemq"};
    IWbemClassObject in;

    void SetUp() override { in.push("AppKey", std::string("k")); }
};

TEST_F(WbemQueriesTest, UpdatePlansDecodeIntoANewObject) {
    service.Push(
        Action::Answer("class[];UpdatePlansList;;string;ProviderName;P;string;DependencyName;D;"));
    IWbemClassObject* out = nullptr;
    EXPECT_EQ(som.GetUpdatePlans("VELMORA_UpdateManager", &in, &out), 0);
    std::unique_ptr<IWbemClassObject> owned(out);
    EXPECT_EQ(service.LastRequest().body, "string;AppKey;k;");
    ASSERT_NE(out, nullptr);
    EXPECT_EQ((*out->GetAs<Objects*>("UpdatePlansList"))->size(), 1u);
    EXPECT_EQ(out->Get("ReturnValue"), nullptr);
}

TEST_F(WbemQueriesTest, ConformityDecodesIntoTheCallersObject) {
    service.Push(Action::Answer(
        "string;UpdateModuleConformityList;;string;ProviderName;P;string;VendorName;V;"
        "string;UpdateModuleKind;K;class;ModuleInfo;;",
        0x00000003u));
    IWbemClassObject out;
    IWbemClassObject* outPtr = &out;
    EXPECT_EQ(som.CheckUpdateModuleConformity("C", nullptr, &outPtr), 3);
    EXPECT_EQ(service.LastRequest().body, "");
    EXPECT_EQ(service.LastRequest().method, "CheckUpdateModuleConformity");
    EXPECT_EQ(out.GetAs<Objects>("UpdateModuleConformityList")->size(), 1u);
}

TEST_F(WbemQueriesTest, ProviderInfoSendsAnEmptyBody) {
    std::string reply;
    qel::pm::WritePlainText(qel_test::SampleDevProvider(), reply);
    service.Push(Action::Answer(reply));
    IWbemClassObject* out = nullptr;
    EXPECT_EQ(som.GetProviderManageInfo("VELMORA_NicProvider", &in, &out), 0);
    std::unique_ptr<IWbemClassObject> owned(out);
    EXPECT_EQ(service.LastRequest().bytes,
              "00000073cafefeedVELMORA_NicProvider/GetProviderManageInfo0000000000000000");
    IWbemClassObject* provider = *out->GetAs<IWbemClassObject*>("DevProviderManageInfo");
    EXPECT_EQ((*provider->GetAs<Objects*>("DeviceInfo"))->size(), 3u);
}

TEST_F(WbemQueriesTest, NegativeResultsDecodeNothingAndLeaveTheOutputAlone) {
    typedef HRESULT (CSomIf::*Query)(std::string, IWbemClassObject*, IWbemClassObject**);
    const Query queries[] = {&CSomIf::GetUpdatePlans, &CSomIf::CheckUpdateModuleConformity,
                             &CSomIf::GetProviderManageInfo};
    for (Query query : queries) {
        service.Push(Action::Answer("class[];UpdatePlansList;;", 0x80001000u));
        IWbemClassObject* out = nullptr;
        EXPECT_EQ((som.*query)("C", &in, &out), 0x80001000L);
        EXPECT_EQ(out, nullptr);
    }
    service.Stop();
    for (Query query : queries) {
        IWbemClassObject* out = nullptr;
        EXPECT_EQ((som.*query)("C", &in, &out), 0x80081001L);
        EXPECT_EQ(out, nullptr);
        IWbemClassObject existing;
        IWbemClassObject* existingPtr = &existing;
        EXPECT_EQ((som.*query)("C", nullptr, &existingPtr), 0x80081001L);
        EXPECT_TRUE(existing.empty());
    }
}

}  // namespace
