// Checks of the values that an operator types, before anything is sent.
#ifndef QEL_TOOLS_SOMCTL_VALUES_H
#define QEL_TOOLS_SOMCTL_VALUES_H

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace somctl {

// Reads a whole decimal integer within [low, high]; no trailing text, no overflow.
bool ParseInteger(const std::string& text, long long low, long long high, long long& value);

// Checks one value against what its field accepts (the field's current JSON
// type, and the rules of Time, DayOfWeek and ProxyPort) and stores it in
// `field`; on failure `error` names the field and what it accepts.
bool CheckValue(const std::string& name, const std::string& value, nlohmann::json& field,
                std::string& error);

// An application key travels as an item of the wire text: printable ASCII
// without blanks or the item separator.
bool IsSendableKey(const std::string& key);

// Applies NAME=VALUE arguments, from `first` on, to a record through its JSON
// form; the record is changed only when every assignment is valid.
template <class Record>
bool ApplyAssignments(Record& record, const std::vector<std::string>& args, std::size_t first,
                      std::string& error) {
    nlohmann::json doc = record;
    for (std::size_t i = first; i < args.size(); ++i) {
        const std::string::size_type eq = args[i].find('=');
        const std::string name = args[i].substr(0, eq);
        if (eq == std::string::npos || !doc.contains(name)) {
            error = "'" + args[i] + "' is not NAME=VALUE with NAME one of:";
            for (const auto& field : doc.items())
                error += " " + field.key();
            return false;
        }
        if (!CheckValue(name, args[i].substr(eq + 1), doc[name], error))
            return false;
    }
    record = doc.get<Record>();
    return true;
}

}  // namespace somctl

#endif  // QEL_TOOLS_SOMCTL_VALUES_H
