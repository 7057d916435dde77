// Realistic provider-management records for tests (tests/data/
// sample-providers.json): three devices (Intel 82599ES, Broadcom BCM5719,
// NVIDIA Tesla T4) with linked applications, modules, repository entries and
// dependencies, and a tool provider with two tools.
#ifndef QEL_TESTS_SUPPORT_SAMPLE_PROVIDERS_H
#define QEL_TESTS_SUPPORT_SAMPLE_PROVIDERS_H

#include "common/record_json.h"
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

inline CVelmora_DependencyInfo SampleDependency(const std::string& tag) {
    CVelmora_DependencyInfo d =
        SampleDevProvider().DeviceInfo[0].ModuleInfo[0].RepositoryInfo[0].DependencyInfoSelf[0];
    d.ProviderName = "dep-provider-" + tag;
    d.UniqueName = "dep-" + tag;
    d.ModuleName = "dep-module-" + tag;
    return d;
}

}  // namespace qel_test

#endif  // QEL_TESTS_SUPPORT_SAMPLE_PROVIDERS_H
