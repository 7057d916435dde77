#include "values.h"

#include <cctype>
#include <cerrno>
#include <climits>
#include <cstdlib>

namespace somctl {
namespace {

bool IsTimeOfDay(const std::string& text) {
    long long hours = 0, minutes = 0;
    return text.size() == 5 && text[2] == ':' &&
           std::isdigit(static_cast<unsigned char>(text[0])) &&
           std::isdigit(static_cast<unsigned char>(text[3])) &&
           ParseInteger(text.substr(0, 2), 0, 23, hours) &&
           ParseInteger(text.substr(3, 2), 0, 59, minutes);
}

bool IsDayName(const std::string& text) {
    static const char* const kDays[] = {"Monday", "Tuesday",  "Wednesday", "Thursday",
                                        "Friday", "Saturday", "Sunday"};
    for (const char* day : kDays) {
        if (text == day)
            return true;
    }
    return false;
}

bool Refuse(std::string& error, const std::string& name, const std::string& accepts,
            const std::string& value) {
    error = name + " accepts " + accepts + ", not '" + value + "'";
    return false;
}

}  // namespace

bool ParseInteger(const std::string& text, long long low, long long high, long long& value) {
    if (text.empty() || std::isspace(static_cast<unsigned char>(text[0])))
        return false;
    errno = 0;
    char* end = nullptr;
    value = std::strtoll(text.c_str(), &end, 10);
    return errno == 0 && *end == '\0' && value >= low && value <= high;
}

bool CheckValue(const std::string& name, const std::string& value, nlohmann::json& field,
                std::string& error) {
    long long number = 0;
    if (field.is_boolean()) {
        if (value != "true" && value != "false")
            return Refuse(error, name, "true or false", value);
        field = value == "true";
    } else if (field.is_number_unsigned()) {
        if (!ParseInteger(value, 0, UINT_MAX, number))
            return Refuse(error, name, "a whole number from 0 to " + std::to_string(UINT_MAX),
                          value);
        field = static_cast<unsigned>(number);
    } else if (field.is_number()) {
        if (!ParseInteger(value, INT_MIN, INT_MAX, number)) {
            return Refuse(
                error, name,
                "a whole number from " + std::to_string(INT_MIN) + " to " + std::to_string(INT_MAX),
                value);
        }
        field = static_cast<int>(number);
    } else if (name == "Time" && !value.empty() && !IsTimeOfDay(value)) {
        return Refuse(error, name, "HH:MM (00:00 to 23:59)", value);
    } else if (name == "DayOfWeek" && !value.empty() && !IsDayName(value)) {
        return Refuse(error, name, "Monday to Sunday", value);
    } else if (name == "ProxyPort" && !value.empty() && !ParseInteger(value, 1, 65535, number)) {
        return Refuse(error, name, "a port from 1 to 65535", value);
    } else {
        field = value;
    }
    return true;
}

bool IsSendableKey(const std::string& key) {
    if (key.empty())
        return false;
    for (unsigned char ch : key) {
        if (ch < 0x21 || ch > 0x7e || ch == ';')
            return false;
    }
    return true;
}

}  // namespace somctl
