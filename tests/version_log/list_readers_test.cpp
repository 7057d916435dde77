// List readers: headers, records, missing and misplaced fields, truncation.
#include <gtest/gtest.h>

#include "CVersionUpLog.h"
#include "support/text_buffer.h"
#include "support/trace_recorder.h"

namespace {

using qel_test::TextBuffer;

std::string Plan(const std::string& provider, int priority, int judgment) {
    return "string;ProviderName;" + provider +
           ";string;VendorName;Velmora;string;UniqueName;nic-fw;string;DeviceId;"
           "PCI\\VEN_8086&DEV_10FB;string;ModuleKind;Firmware;int;UpdatePriority;" +
           std::to_string(priority) +
           ";string;CurrentVendorVersion;1.0;string;NextVendorVersion;1.1;string;DisplayName;"
           "NIC firmware;int;UpdateJudgment;" +
           std::to_string(judgment) + ";string;DependencyName;none;";
}

class ListReadersTest : public ::testing::Test {
protected:
    CVersionUpLog codec{"lists"};
};

TEST_F(ListReadersTest, PlansWithHeaderReadEveryField) {
    TextBuffer body("class[];UpdatePlansList;;" + Plan("nic", 3, -2) + Plan("raid", 1, 0));
    std::vector<CVELMORA_UpdatePlans> plans;
    codec.toObject(body.get(), plans);
    ASSERT_EQ(plans.size(), 2u);
    EXPECT_EQ(plans[0].ProviderName, "nic");
    EXPECT_EQ(plans[0].DeviceId, "PCI\\VEN_8086&DEV_10FB");
    EXPECT_EQ(plans[0].UpdatePriority, 3);
    EXPECT_EQ(plans[0].UpdateJudgment, -2);
    EXPECT_EQ(plans[0].DependencyName, "none");
    EXPECT_EQ(plans[1].ProviderName, "raid");
    EXPECT_EQ(plans[1].DisplayName, "NIC firmware");
}

TEST_F(ListReadersTest, MissingFieldsAreSkippedInPlace) {
    std::string plan = Plan("nic", 3, 4);
    plan.erase(plan.find("int;UpdatePriority;3;"), std::string("int;UpdatePriority;3;").size());
    TextBuffer body("string;UpdatePlansList;;" + plan);
    std::vector<CVELMORA_UpdatePlans> plans;
    codec.toObject(body.get(), plans);
    ASSERT_EQ(plans.size(), 1u);
    EXPECT_EQ(plans[0].UpdatePriority, 0);
    EXPECT_EQ(plans[0].CurrentVendorVersion, "1.0");
    EXPECT_EQ(plans[0].UpdateJudgment, 4);

    TextBuffer versions(
        "string;QelVersionInfoList;;string;GroupName;core;string;FileVersion;2.0;"
        "string;GroupName;ui;string;FileName;ui.so;string;FileVersion;2.1;");
    std::vector<CVELMORA_QelVersionInfo> list;
    codec.toObject(versions.get(), list);
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list[0].FileName, "");
    EXPECT_EQ(list[0].FileVersion, "2.0");
    EXPECT_EQ(list[1].FileName, "ui.so");
}

TEST_F(ListReadersTest, ListBoundaries) {
    struct Case {
        const char* what;
        std::string body;
        std::size_t records;
    };
    const std::string log =
        "string;ProviderName;nic;string;DateTime;2026-11-01 10:00;string;VendorName;V;"
        "string;UniqueName;U;string;ModuleKind;FW;string;BeforeVersion;1;string;AfterVersion;2;";
    const Case cases[] = {
        {"header only", "string;VersionUpdateLogList;;", 0},
        {"no header", log + log, 2},
        {"first field renamed ends the list", log + "string;ProviderNameX;n;" + log, 1},
        {"truncated record still counts", log + log.substr(0, 60), 2},
        {"empty", "", 0},
        {"unreadable", "garbage", 0},
    };
    for (const Case& c : cases) {
        TextBuffer body(c.body);
        std::vector<CVELMORA_VersionUpdateLog> logs;
        codec.toObject(body.get(), logs);
        EXPECT_EQ(logs.size(), c.records) << c.what;
    }
}

TEST_F(ListReadersTest, AppendsToTheVectorAndTracesEvenForNull) {
    qel_test::TraceRecorder traces;
    std::vector<CVELMORA_QelVersionInfo> list(1);
    TextBuffer body("string;GroupName;core;string;FileName;a;string;FileVersion;1;");
    codec.toObject(body.get(), list);
    codec.toObject(body.get(), list);
    codec.toObject(nullptr, list);
    EXPECT_EQ(list.size(), 3u);
    const std::string sig =
        "void CVersionUpLog::toObject(char*, std::vector<CVELMORA_QelVersionInfo, "
        "std::allocator<CVELMORA_QelVersionInfo> >&)";
    EXPECT_EQ(traces.Texts().back(), "[LEAVE] " + sig);
    EXPECT_EQ(traces.Lines().back().source, "lists");
    EXPECT_EQ(traces.Texts().size(), 6u);
}

}  // namespace
