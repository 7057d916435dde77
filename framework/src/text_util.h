// Small text helpers shared by the framework's readers (not exported).
#ifndef QEL_FRAMEWORK_SRC_TEXT_UTIL_H
#define QEL_FRAMEWORK_SRC_TEXT_UTIL_H

#include <string>

namespace qel {

// `text` without blanks, tabs and line ends at either end.
inline std::string TrimBlanks(const std::string& text) {
    const char* blanks = " \t\r\n";
    std::string::size_type first = text.find_first_not_of(blanks);
    if (first == std::string::npos)
        return std::string();
    std::string::size_type last = text.find_last_not_of(blanks);
    return text.substr(first, last - first + 1);
}

// The value of one hexadecimal digit of either case; -1 for any other character.
inline int HexDigitValue(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

}  // namespace qel

#endif  // QEL_FRAMEWORK_SRC_TEXT_UTIL_H
