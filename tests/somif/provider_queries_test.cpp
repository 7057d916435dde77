// Provider and plan queries end to end: typed (with naming) and WBEM forms.
#include <gtest/gtest.h>

#include <map>
#include <memory>

#include "CSomIf.h"
#include "provider_info/plain_text.h"
#include "support/fake_som_service.h"
#include "support/sample_providers.h"
#include "support/trace_recorder.h"

namespace {

using qel_test::Action;
using qel_test::FakeSomService;
typedef std::vector<IWbemClassObject*> Objects;

class ProviderQueriesTest : public ::testing::Test {
  protected:
    qel_test::TempSysroot root;
    FakeSomService service{root, 1};
    CSomIf som{"query"};

    void SetUp() override {
        root.WriteFile("/usr/share/hwdata/pci.ids",
                       "8086  Intel Corporation\n\t10fb  82599ES 10-Gigabit SFI/SFP+ Network "
                       "Connection\n14e4  Broadcom Inc. and subsidiaries\n\t1657  NetXtreme "
                       "BCM5719 Gigabit Ethernet PCIe\n");
    }
    static std::string DeviceReply() {
        std::string text;
        qel::pm::WritePlainText(qel_test::SampleDevProvider(), text);
        return text;
    }
};

TEST_F(ProviderQueriesTest, TypedQueriesReadNameAndMapResults) {
    CVelmora_DevProviderManageInfo info;
    info.DeviceInfo.resize(5);  // from an earlier query: replaced
    service.Push(Action::Answer(DeviceReply()));
    EXPECT_EQ(som.GetProviderManageInfo("VELMORA_NicProvider", info), 0);
    ASSERT_EQ(info.DeviceInfo.size(), 3u);
    EXPECT_EQ(info.DeviceInfo[0].DeviceName, "82599ES 10-Gigabit SFI/SFP+ Network Connection");
    EXPECT_EQ(info.DeviceInfo[1].DeviceVendorName, "Broadcom Inc. and subsidiaries");
    EXPECT_EQ(info.DeviceInfo[2].DeviceName, "");              // vendor not in this database
    service.Push(Action::Answer(DeviceReply(), 0x80001234u));  // negative: read, 0x80081101
    EXPECT_EQ(som.GetProviderManageInfo("C", info), 0x80081101L);
    EXPECT_EQ(info.DeviceInfo.size(), 3u);
    service.Push(Action::Answer(DeviceReply(), 0x00000004u));
    EXPECT_EQ(som.GetProviderManageInfo("C", info), 4);
    service.Push(Action::Raw(""));
    info.ProviderName = "kept";
    EXPECT_EQ(som.GetProviderManageInfo("C", info), 0x80081101L);
    EXPECT_TRUE(info.DeviceInfo.empty());
    std::string tools;
    qel::pm::WritePlainText(qel_test::SampleToolProvider(), tools);
    service.Push(Action::Answer(tools));
    CVelmora_ToolProviderManageInfo tool;
    EXPECT_EQ(som.GetProviderManageInfo("VELMORA_ToolProvider", tool), 0);
    EXPECT_EQ(tool.ToolInfo.size(), 2u);
    tool.ToolInfo.clear();  // the receive of a request the caller sent
    service.Push(Action::Answer(tools));
    const std::string head = som.getMsgHead("C", "GetProviderManageInfo", 0);
    EXPECT_EQ(som.SendMessage(head), 55);
    EXPECT_EQ(som.RecvProviderManageInfo(head.size(), tool), 0);
    EXPECT_EQ(tool.ToolInfo.size(), 2u);

    qel_test::TraceRecorder traces;
    EXPECT_EQ(som.RecvProviderManageInfo(60, tool), -1);  // nothing sent, nothing received
    service.Stop();
    info.DeviceInfo.resize(2);
    EXPECT_EQ(som.GetProviderManageInfo("C", info), 0x80081001L);
    EXPECT_TRUE(info.DeviceInfo.empty());
    EXPECT_EQ(info.ProviderName, "kept");
    EXPECT_EQ(traces.Texts()[1],
              "[LEAVE] int CSomIf::RecvProviderManageInfo(size_t, "
              "CVelmora_ToolProviderManageInfo&), rc=-1");
}

TEST_F(ProviderQueriesTest, WbemQueriesDecodeOnlyWhenNotNegative) {
    IWbemClassObject in;
    in.push("AppKey", std::string("k"));
    service.Push(
        Action::Answer("class[];UpdatePlansList;;string;ProviderName;P;string;DependencyName;D;"));
    IWbemClassObject* out = nullptr;
    EXPECT_EQ(som.GetUpdatePlans("VELMORA_UpdateManager", &in, &out), 0);
    std::unique_ptr<IWbemClassObject> owned(out);
    EXPECT_EQ((*out->GetAs<Objects*>("UpdatePlansList"))->size(), 1u);
    EXPECT_EQ(out->Get("ReturnValue"), nullptr);
    service.Push(Action::Answer(
        "string;UpdateModuleConformityList;;string;ProviderName;P;string;VendorName;V;string;"
        "UpdateModuleKind;K;class;ModuleInfo;;class;DepoInfo;;class[];ShareInfo;;string;"
        "ProviderName;R;string;UpperVendorVersion;1;class[];SimuInfo;;string;ProviderName;S;",
        0x00000003u));
    IWbemClassObject mine;
    IWbemClassObject* minePtr = &mine;
    qel_test::TraceRecorder traces;
    EXPECT_EQ(som.CheckUpdateModuleConformity("C", nullptr, &minePtr), 3);  // positive: decoded
    EXPECT_EQ(mine.GetAs<Objects>("UpdateModuleConformityList")->size(), 1u);
    std::map<std::string, int> open;  // every step of the decoding leaves
    for (const std::string& t : traces.Texts())
        open[t.substr(8, t.rfind(')') - 7)] += t[1] == 'E' ? 1 : t[1] == 'L' ? -1 : 0;
    for (const auto& o : open)
        EXPECT_EQ(o.second, 0) << o.first;
    service.Push(Action::Answer(DeviceReply()));
    IWbemClassObject* tree = nullptr;
    EXPECT_EQ(som.GetProviderManageInfo("VELMORA_NicProvider", &in, &tree), 0);
    std::unique_ptr<IWbemClassObject> ownedTree(tree);
    IWbemClassObject* provider = *tree->GetAs<IWbemClassObject*>("DevProviderManageInfo");
    EXPECT_EQ((*provider->GetAs<Objects*>("DeviceInfo"))->size(), 3u);

    service.Stop();
    IWbemClassObject* none = nullptr;
    EXPECT_EQ(som.GetUpdatePlans("C", &in, &none), 0x80081001L);
    EXPECT_EQ(none, nullptr);
}

}  // namespace
