// The raw scanner under every reader of the item text.
//
// ScanItem finds the three ";" of the item at a position without copying
// anything; the readers copy only the fields they keep. All searches stop at
// the body's NUL, so no reader can run past the received text.
#ifndef QEL_SRC_CODEC_ITEM_VIEW_H
#define QEL_SRC_CODEC_ITEM_VIEW_H

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "QelItemText.h"

namespace qel {

// A view of one item in a NUL-terminated body. `fields` counts how many of
// tag, name and value were closed by ";" (3 for a whole item).
struct ItemView {
    const char* tag = nullptr;
    std::size_t tagLength = 0;
    const char* name = nullptr;
    std::size_t nameLength = 0;
    const char* value = nullptr;
    std::size_t valueLength = 0;
    int fields = 0;
    char* next = nullptr;  // after the third ";" when fields == 3

    bool complete() const { return fields == 3; }
    bool NameEquals(const char* text, std::size_t length) const {
        return nameLength == length && std::memcmp(name, text, length) == 0;
    }
    bool TagEquals(const char* text) const {
        return tagLength == std::strlen(text) && std::memcmp(tag, text, tagLength) == 0;
    }
    std::string Tag() const { return std::string(tag, tagLength); }
    std::string Name() const { return std::string(name, nameLength); }
    // The value with every "%!@" turned back into ";".
    std::string Value() const {
        std::string out;
        out.reserve(valueLength);
        item::AppendUnescaped(out, value, value + valueLength);
        return out;
    }
};

// Scans the item at `pos` (not null). Fills as many fields as are closed.
inline void ScanItem(char* pos, ItemView& item) {
    item.fields = 0;
    char* end = std::strchr(pos, item::kFieldEnd);
    if (end == nullptr)
        return;
    item.tag = pos;
    item.tagLength = static_cast<std::size_t>(end - pos);
    item.fields = 1;
    pos = end + 1;
    end = std::strchr(pos, item::kFieldEnd);
    if (end == nullptr)
        return;
    item.name = pos;
    item.nameLength = static_cast<std::size_t>(end - pos);
    item.fields = 2;
    pos = end + 1;
    end = std::strchr(pos, item::kFieldEnd);
    if (end == nullptr)
        return;
    item.value = pos;
    item.valueLength = static_cast<std::size_t>(end - pos);
    item.fields = 3;
    item.next = end + 1;
}

// What a key is compared with: the whole key, or its last path component
// when it contains "/" (putting the key's path in front of the item's name
// and comparing with the key is the same test).
struct KeyMatch {
    const char* text;
    std::size_t length;
};

inline KeyMatch PathKey(const char* key) {
    const char* slash = std::strrchr(key, item::kPathSeparator);
    const char* last = slash != nullptr ? slash + 1 : key;
    return KeyMatch{last, std::strlen(last)};
}

inline KeyMatch ExactKey(const char* key) {
    return KeyMatch{key, std::strlen(key)};
}

// strtol, base 10: leading blanks and a sign accepted, trailing text
// ignored, nothing readable gives 0, out of range saturates.
inline long ParseDecimal(const std::string& text) {
    return std::strtol(text.c_str(), nullptr, 10);
}

// The rules by which the array readers split a "!#"-joined value.
struct SplitRules {
    bool emptyGivesOneElement;  // an empty value yields one empty element
    bool cutLastAtFieldEnd;     // the last element ends at its first ";"
};

inline void SplitArrayValue(const std::string& value, SplitRules rules,
                            std::vector<std::string>& out) {
    if (value.empty()) {
        if (rules.emptyGivesOneElement)
            out.emplace_back();
        return;
    }
    std::string::size_type start = 0;
    for (;;) {
        std::string::size_type hit = value.find(item::kArraySeparator, start);
        if (hit == std::string::npos)
            break;
        out.emplace_back(value, start, hit - start);
        start = hit + item::kArraySeparatorLength;
    }
    std::string::size_type stop = std::string::npos;
    if (rules.cutLastAtFieldEnd) {
        stop = value.find(item::kFieldEnd, start);
        if (stop != std::string::npos)
            stop -= start;
    }
    out.emplace_back(value, start, stop);
}

}  // namespace qel

#endif  // QEL_SRC_CODEC_ITEM_VIEW_H
