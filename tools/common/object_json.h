// A property-object tree as ordered JSON: somctl prints a method's output
// parameters with it, and the tests compare whole trees through it. Nested
// objects become objects, object lists arrays, in entry order. Two
// entries of one name keep the first's place and the later's value (what
// GetAs returns). Values of a type no reader stores show as "?". The string
// arrays that trees keep as one joined text are split when `arrays` names them.
#ifndef QEL_TOOLS_COMMON_OBJECT_JSON_H
#define QEL_TOOLS_COMMON_OBJECT_JSON_H

#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

#include "IWbemClassObject.h"

namespace qel {

inline nlohmann::ordered_json SplitJoined(const std::string& text) {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (std::size_t at = 0, end = 0; !text.empty() && end != std::string::npos; at = end + 2) {
        end = text.find("!#", at);
        list.push_back(text.substr(at, end == std::string::npos ? end : end - at));
    }
    return list;
}

// Stores the value into `out` when it holds one of the types T.
template <class... T>
bool Scalar(const boost::any& value, nlohmann::ordered_json& out) {
    return ((boost::any_cast<T>(&value) && (out = *boost::any_cast<T>(&value), true)) || ...);
}

inline nlohmann::ordered_json ObjectJson(const IWbemClassObject& obj,
                                         const std::set<std::string>& arrays = {}) {
    typedef std::vector<IWbemClassObject*> Objects;
    nlohmann::ordered_json json = nlohmann::ordered_json::object();
    auto list = [&](const Objects& objects) {
        nlohmann::ordered_json items = nlohmann::ordered_json::array();
        for (const IWbemClassObject* element : objects)
            items.push_back(element ? ObjectJson(*element, arrays) : nullptr);
        return items;
    };
    for (const auto& entry : obj) {
        const boost::any& v = entry.second;
        nlohmann::ordered_json& out = json[entry.first];
        if (const auto* s = boost::any_cast<std::string>(&v))
            out = arrays.count(entry.first) ? SplitJoined(*s) : nlohmann::ordered_json(*s);
        else if (const auto* o = boost::any_cast<IWbemClassObject*>(&v))
            out = *o ? ObjectJson(**o, arrays) : nullptr;
        else if (const auto* vec = boost::any_cast<Objects>(&v))
            out = list(*vec);
        else if (const auto* ptr = boost::any_cast<Objects*>(&v))
            out = *ptr ? list(**ptr) : nullptr;
        else if (!Scalar<int, long, unsigned long, bool, std::vector<std::string>>(v, out))
            out = "?";
    }
    return json;
}

// The tree as compact JSON text.
inline std::string TreeText(const IWbemClassObject& obj) {
    return ObjectJson(obj).dump();
}

}  // namespace qel

#endif  // QEL_TOOLS_COMMON_OBJECT_JSON_H
