#include "CStringUtil.h"

#include <cctype>

std::string CStringUtil::StringToUpperCase(std::string text) {
    for (char& c : text)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

std::string CStringUtil::StringToLowerCase(std::string text) {
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

std::string CStringUtil::ReplaceAll(std::string text, const std::string& from,
                                    const std::string& to) {
    if (from.empty())
        return text;
    std::string out;
    out.reserve(text.size());
    std::string::size_type start = 0;
    for (;;) {
        std::string::size_type hit = text.find(from, start);
        if (hit == std::string::npos)
            break;
        out.append(text, start, hit - start).append(to);
        start = hit + from.size();
    }
    out.append(text, start, std::string::npos);
    return out;
}
