// The flat item text that travels between the SOM client and its service.
//
// A body is a run of items "tag;name;value;" with nothing between them.
// Inside a value ";" travels as "%!@"; string-array elements are joined by
// "!#". This header is the one place where these bytes are spelled out; the
// writers of IWbemClassObject and every reader of the codecs use it.
#ifndef QEL_ITEM_TEXT_H
#define QEL_ITEM_TEXT_H

#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

namespace qel {
namespace item {

constexpr char kFieldEnd = ';';
constexpr const char kEscapedFieldEnd[] = "%!@";
constexpr std::size_t kEscapedFieldEndLength = 3;
constexpr const char kArraySeparator[] = "!#";
constexpr std::size_t kArraySeparatorLength = 2;
constexpr char kPathSeparator = '/';

constexpr const char kTagString[] = "string";
constexpr const char kTagInt[] = "int";
constexpr const char kTagUInt[] = "uint";
constexpr const char kTagLong[] = "long";
constexpr const char kTagULong[] = "ulong";
constexpr const char kTagBool[] = "bool";
constexpr const char kTagStringArray[] = "string[]";
constexpr const char kTagClass[] = "class";
constexpr const char kTagClassArray[] = "class[]";

constexpr const char kTrue[] = "true";
constexpr const char kFalse[] = "false";

// Appends `value` to `out` with every ";" written as "%!@".
inline void AppendEscaped(std::string& out, const char* value, std::size_t length) {
    const char* end = value + length;
    while (value < end) {
        const char* semi = static_cast<const char*>(std::memchr(value, kFieldEnd, end - value));
        if (semi == nullptr) {
            out.append(value, end);
            return;
        }
        out.append(value, semi);
        out.append(kEscapedFieldEnd, kEscapedFieldEndLength);
        value = semi + 1;
    }
}

// Appends [begin, end) to `out` with every "%!@" turned back into ";".
inline void AppendUnescaped(std::string& out, const char* begin, const char* end) {
    while (begin < end) {
        const char* mark = static_cast<const char*>(std::memchr(begin, '%', end - begin));
        if (mark == nullptr) {
            out.append(begin, end);
            return;
        }
        if (end - mark >= 3 && mark[1] == '!' && mark[2] == '@') {
            out.append(begin, mark);
            out.push_back(kFieldEnd);
            begin = mark + 3;
        } else {
            out.append(begin, mark + 1);
            begin = mark + 1;
        }
    }
}

// Appends one whole item: tag ";" name ";" value ";" (value already final).
inline void AppendItem(std::string& out, const char* tag, const std::string& name,
                       const std::string& rawValue) {
    out.append(tag);
    out.push_back(kFieldEnd);
    out.append(name);
    out.push_back(kFieldEnd);
    out.append(rawValue);
    out.push_back(kFieldEnd);
}

// The typed item writers. IWbemClassObject's Set* members forward to them;
// a writer with no object at hand calls them directly.
// A string item whose name is `prefix` followed by `name` ("DeviceInfo[0]/" "UniqueName").
inline void AppendStringItem(std::string& out, const std::string& prefix, const std::string& name,
                             const std::string& value) {
    out.append(kTagString);
    out.push_back(kFieldEnd);
    out.append(prefix);
    out.append(name);
    out.push_back(kFieldEnd);
    AppendEscaped(out, value.data(), value.size());
    out.push_back(kFieldEnd);
}

inline void AppendStringItem(std::string& out, const std::string& name, const std::string& value) {
    AppendStringItem(out, std::string(), name, value);
}

inline void AppendIntItem(std::string& out, const std::string& name, long long value,
                          const char* tag = kTagInt) {
    AppendItem(out, tag, name, std::to_string(value));
}

inline void AppendBoolItem(std::string& out, const std::string& name, bool value) {
    AppendItem(out, kTagBool, name, value ? kTrue : kFalse);
}

inline void AppendStringArrayItem(std::string& out, const std::string& name,
                                  const std::vector<std::string>& values) {
    out.append(kTagStringArray);
    out.push_back(kFieldEnd);
    out.append(name);
    out.push_back(kFieldEnd);
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (i != 0)
            out.append(kArraySeparator, kArraySeparatorLength);
        AppendEscaped(out, values[i].data(), values[i].size());
    }
    out.push_back(kFieldEnd);
}

}  // namespace item
}  // namespace qel

#endif  // QEL_ITEM_TEXT_H
