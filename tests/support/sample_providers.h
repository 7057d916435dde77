// Realistic provider-management records for tests (tests/data/
// sample-providers.json): three devices (Intel 82599ES, Broadcom BCM5719,
// NVIDIA Tesla T4) with linked applications, modules, repository entries and
// dependencies, and a tool provider with two tools; the reply text that the
// service writes for a provider.
#ifndef QEL_TESTS_SUPPORT_SAMPLE_PROVIDERS_H
#define QEL_TESTS_SUPPORT_SAMPLE_PROVIDERS_H

#include "common/record_json.h"
#include "provider_info/plain_text.h"
#include "support/test_data.h"

namespace qel_test {

inline const nlohmann::json& SampleProviders() {
    static const nlohmann::json doc = nlohmann::json::parse(TestData("sample-providers.json"));
    return doc;
}

inline CVelmora_DevProviderManageInfo SampleDevProvider() {
    return SampleProviders().at("device").get<CVelmora_DevProviderManageInfo>();
}

inline CVelmora_ToolProviderManageInfo SampleToolProvider() {
    return SampleProviders().at("tool").get<CVelmora_ToolProviderManageInfo>();
}

template <class Info>
std::string PlainText(const Info& info) {
    std::string text;
    qel::pm::WritePlainText(info, text);
    return text;
}

}  // namespace qel_test

#endif  // QEL_TESTS_SUPPORT_SAMPLE_PROVIDERS_H
