// List readers: headers, records, missing and misplaced fields, truncation.
#include <gtest/gtest.h>

#include "CVersionUpLog.h"
#include "common/record_json.h"
#include "support/text_buffer.h"
#include "support/trace_recorder.h"

namespace {

using qel_test::TextBuffer;

const std::string kPlan =
    "string;ProviderName;nic;string;VendorName;Velmora;string;UniqueName;nic-fw;string;DeviceId;"
    "PCIROOT-8086-10FB;string;ModuleKind;Firmware;int;UpdatePriority;3;string;CurrentVendorVersion;"
    "1.0;string;NextVendorVersion;1.1;string;DisplayName;NIC firmware;int;UpdateJudgment;-2;"
    "string;DependencyName;none;";
const std::string kLog =
    "string;ProviderName;nic;string;DateTime;2026-11-01 10:00;string;VendorName;V;"
    "string;UniqueName;U;string;ModuleKind;FW;string;BeforeVersion;1;string;AfterVersion;2;";

TEST(ListReadersTest, EveryFieldMissingFieldsInPlaceAndListBoundaries) {
    CVersionUpLog codec("lists");
    std::string noPriority = kPlan;
    noPriority.erase(noPriority.find("int;UpdatePriority;3;"), 21);
    TextBuffer body("class[];UpdatePlansList;;" + kPlan + noPriority),
        versions(
            "string;QelVersionInfoList;;string;GroupName;core;string;FileVersion;2.0;"
            "string;GroupName;ui;string;FileName;ui.so;string;FileVersion;2.1;");
    std::vector<CVELMORA_UpdatePlans> plans;
    std::vector<CVELMORA_QelVersionInfo> list;
    codec.toObject(body.get(), plans);
    codec.toObject(versions.get(), list);
    nlohmann::json plan = nlohmann::json::parse(
        R"({"ProviderName":"nic","VendorName":"Velmora","UniqueName":"nic-fw",)"
        R"("DeviceId":"PCIROOT-8086-10FB","ModuleKind":"Firmware","UpdatePriority":3,)"
        R"("CurrentVendorVersion":"1.0","NextVendorVersion":"1.1","DisplayName":"NIC firmware",)"
        R"("UpdateJudgment":-2,"DependencyName":"none"})");
    nlohmann::json missing = plan;
    missing["UpdatePriority"] = 0;  // and the later fields still read
    EXPECT_EQ(nlohmann::json(plans), nlohmann::json({plan, missing}));
    EXPECT_EQ(nlohmann::json(list).dump(),
              R"([{"FileName":"","FileVersion":"2.0","GroupName":"core"},)"
              R"({"FileName":"ui.so","FileVersion":"2.1","GroupName":"ui"}])");
    // No header; a renamed first field ends the list; a cut record still counts.
    // clang-format off
    const std::pair<std::string, std::size_t> cases[] = {{"string;VersionUpdateLogList;;", 0},
        {kLog + kLog, 2}, {kLog + "string;ProviderNameX;n;" + kLog, 1},
        {kLog + kLog.substr(0, 60), 2}, {"", 0}, {"garbage", 0}};
    // clang-format on
    for (const auto& c : cases) {
        TextBuffer body(c.first);
        std::vector<CVELMORA_VersionUpdateLog> logs;
        codec.toObject(body.get(), logs);
        EXPECT_EQ(logs.size(), c.second) << c.first;
    }
    qel_test::TraceRecorder traces;
    std::vector<CVELMORA_VersionUpdateLog> logs(1);
    TextBuffer log(kLog);
    codec.toObject(log.get(), logs);
    codec.toObject(nullptr, logs);  // appends nothing, traces all the same
    EXPECT_EQ(logs.size(), 2u);
    EXPECT_EQ(traces.Texts().size(), 4u);
    EXPECT_EQ(traces.Texts().back(),
              "[LEAVE] void CVersionUpLog::toObject(char*, std::vector<CVELMORA_VersionUpdateLog, "
              "std::allocator<CVELMORA_VersionUpdateLog> >&)");
    EXPECT_EQ(traces.Lines().back().source, "lists");
}

}  // namespace
