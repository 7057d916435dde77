#include "scenario.h"

#include <fstream>
#include <stdexcept>

#include "common/record_json.h"

namespace somd {
namespace {

// The parsed file, or null JSON when the file does not exist.
nlohmann::json ReadJson(const std::string& path) {
    std::ifstream in(path);
    if (!in)
        return nlohmann::json();
    try {
        return nlohmann::json::parse(in);
    } catch (const nlohmann::json::exception& e) {
        throw std::runtime_error(path + ": " + e.what());
    }
}

}  // namespace

Scenario LoadScenario(const std::string& folder) {
    Scenario scenario;
    try {
        const nlohmann::json providers = ReadJson(folder + "/providers.json");
        if (providers.contains("DeviceProviders")) {
            providers.at("DeviceProviders").get_to(scenario.deviceProviders);
        }
        if (providers.contains("ToolProviders")) {
            providers.at("ToolProviders").get_to(scenario.toolProviders);
        }
        const nlohmann::json plans = ReadJson(folder + "/plans.json");
        if (plans.is_array())
            plans.get_to(scenario.plans);
        const nlohmann::json versions = ReadJson(folder + "/versions.json");
        if (versions.is_array())
            versions.get_to(scenario.versions);
        const nlohmann::json alive = ReadJson(folder + "/alive.json");
        if (alive.is_object()) {
            for (const auto& item : alive.items()) {
                AliveParameter parameter;
                parameter.value = item.value().value("Value", "");
                parameter.type = item.value().value("Type", 0u);
                scenario.aliveDefaults[item.key()] = parameter;
            }
        }
        const nlohmann::json service = ReadJson(folder + "/service.json");
        if (service.is_object()) {
            scenario.rebootAfterUpdate = service.value("RebootAfterUpdate", 0L);
            scenario.workMilliseconds = service.value("WorkMilliseconds", 300);
        }
    } catch (const nlohmann::json::exception& e) {
        throw std::runtime_error(folder + ": " + e.what());
    }
    return scenario;
}

}  // namespace somd
