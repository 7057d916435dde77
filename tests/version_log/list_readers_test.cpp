// List readers: headers, records, missing and misplaced fields, truncation, and
// records appended to what the list already holds.
#include <gtest/gtest.h>

#include "CVersionUpLog.h"
#include "common/record_json.h"
#include "support/text_buffer.h"

namespace {

using qel_test::TextBuffer;

const std::string kPlan =
    "string;ProviderName;P;string;VendorName;V;string;UniqueName;U;string;DeviceId;D;"
    "string;ModuleKind;M;int;UpdatePriority;3;string;CurrentVendorVersion;1.0;"
    "string;NextVendorVersion;1.1;string;DisplayName;N N;int;UpdateJudgment;-2;"
    "string;DependencyName;none;";
const std::string kLog =
    "string;ProviderName;nic;string;DateTime;2026-11-01 10:00;string;VendorName;V;"
    "string;UniqueName;U;string;ModuleKind;FW;string;BeforeVersion;1;string;AfterVersion;2;";

// What a list reader makes of a text, appended to `kept` empty records.
template <class Record>
nlohmann::json Read(const std::string& text, std::size_t kept = 0) {
    CVersionUpLog codec("lists");
    TextBuffer body(text);
    std::vector<Record> list(kept);
    codec.toObject(body.get(), list);
    return list;
}

TEST(ListReadersTest, EveryFieldMissingFieldsInPlaceAndListBoundaries) {
    std::string noPriority = kPlan;
    noPriority.erase(noPriority.find("int;UpdatePriority;3;"), 21);
    nlohmann::json plan = nlohmann::json::parse(
        R"({"ProviderName":"P","VendorName":"V","UniqueName":"U","DeviceId":"D","ModuleKind":"M",)"
        R"("UpdatePriority":3,"CurrentVendorVersion":"1.0","NextVendorVersion":"1.1",)"
        R"("DisplayName":"N N","UpdateJudgment":-2,"DependencyName":"none"})");
    nlohmann::json missing = plan;
    missing["UpdatePriority"] = 0;  // and the later fields still read
    EXPECT_EQ(Read<CVELMORA_UpdatePlans>("class[];UpdatePlansList;;" + kPlan + noPriority),
              nlohmann::json({plan, missing}));
    EXPECT_EQ(Read<CVELMORA_QelVersionInfo>("string;QelVersionInfoList;;string;GroupName;core;"
                                            "string;FileVersion;2.0;string;GroupName;ui;"
                                            "string;FileName;ui.so;string;FileVersion;2.1;")
                  .dump(),
              R"([{"FileName":"","FileVersion":"2.0","GroupName":"core"},)"
              R"({"FileName":"ui.so","FileVersion":"2.1","GroupName":"ui"}])");
    // No header; a renamed first field ends the list; a cut record still counts.
    // clang-format off
    const std::pair<std::string, std::size_t> cases[] = {{"string;VersionUpdateLogList;;", 0},
        {kLog + kLog, 2}, {kLog + "string;ProviderNameX;n;" + kLog, 1},
        {kLog + kLog.substr(0, 60), 2}, {"", 0}, {"garbage", 0}};
    // clang-format on
    for (const auto& c : cases)
        EXPECT_EQ(Read<CVELMORA_VersionUpdateLog>(c.first).size(), c.second) << c.first;
    EXPECT_EQ(Read<CVELMORA_VersionUpdateLog>(kLog, 1).size(), 2u);
}

}  // namespace
