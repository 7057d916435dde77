// The raw scanner under every reader of the item text.
//
// ScanItem finds the three ";" of the item at a position without copying
// anything; the readers copy only the fields they keep. All searches stop at
// the body's NUL, so no reader can run past the received text.
#ifndef QEL_SRC_CODEC_ITEM_VIEW_H
#define QEL_SRC_CODEC_ITEM_VIEW_H

#include <charconv>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "QelItemText.h"

// Forces the item readers inline into readers with literal keys, so that the
// keys' lengths and bytes are known at compile time there.
#define QEL_INLINE_READER inline __attribute__((always_inline))

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
    std::string Value() const;
    void AssignValue(std::string& out) const;
    // Whether the value, unescaped, is exactly `text` (which holds no ";").
    bool ValueEquals(const char* text, std::size_t length) const {
        return valueLength == length && std::memcmp(value, text, length) == 0;
    }
};

// Replaces `out` with [text, text + length) unescaped; a straight copy when
// no "%" can start an escape.
inline void AssignUnescaped(std::string& out, const char* text, std::size_t length) {
    if (std::memchr(text, '%', length) == nullptr) {
        out.assign(text, length);
        return;
    }
    out.clear();
    out.reserve(length);
    item::AppendUnescaped(out, text, text + length);
}

// [text, text + length) unescaped, as a new string.
inline std::string Unescaped(const char* text, std::size_t length) {
    if (std::memchr(text, '%', length) == nullptr)
        return std::string(text, length);
    std::string out;
    out.reserve(length);
    item::AppendUnescaped(out, text, text + length);
    return out;
}

inline std::string ItemView::Value() const {
    return Unescaped(value, valueLength);
}

inline void ItemView::AssignValue(std::string& out) const {
    AssignUnescaped(out, value, valueLength);
}

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

QEL_INLINE_READER KeyMatch PathKey(const char* key) {
    const char* slash = std::strrchr(key, item::kPathSeparator);
    const char* last = slash != nullptr ? slash + 1 : key;
    return KeyMatch{last, std::strlen(last)};
}

// prefix + key as a key to match: an item's name is compared with the key's
// last path component, which a prefix that is empty or ends a path
// ("List[3]/") cannot change, so then `key` itself is returned and no path
// is built; otherwise the path is built in `scratch`.
inline const char* PrefixedKey(const std::string& prefix, const char* key, std::string& scratch) {
    if (prefix.empty() || prefix.back() == item::kPathSeparator)
        return key;
    scratch = prefix + key;
    return scratch.c_str();
}

inline KeyMatch ExactKey(const char* key) {
    return KeyMatch{key, std::strlen(key)};
}

// strtol, base 10: leading blanks and a sign accepted, trailing text
// ignored, nothing readable gives 0, out of range saturates.
inline long ParseDecimal(const std::string& text) {
    return std::strtol(text.c_str(), nullptr, 10);
}

// ParseDecimal of the unescaped text, read in place: digits with an optional
// "-" go through from_chars; blanks, "+" and other rare forms through strtol
// on an unescaped copy.
inline long ParseDecimal(const char* text, std::size_t length) {
    const char* end = text + length;
    const char* digits = length != 0 && *text == '-' ? text + 1 : text;
    if (digits == end || *digits < '0' || *digits > '9') {
        std::string copy;
        AssignUnescaped(copy, text, length);
        return ParseDecimal(copy);
    }
    long value = 0;
    if (std::from_chars(text, end, value).ec == std::errc::result_out_of_range)
        return *text == '-' ? LONG_MIN : LONG_MAX;
    return value;
}

inline long ParseDecimal(const ItemView& item) {
    return ParseDecimal(item.value, item.valueLength);
}

enum class ItemMatch { kUnreadable, kOtherName, kMatched };

// Whether `text` starts with the name `key` closed by ";". Stops at the
// first byte that differs, so never reads past the body's NUL; a key that
// holds a ";" never matches (an item's name cannot hold one).
QEL_INLINE_READER bool StartsWithName(const char* text, const KeyMatch& key) {
    for (std::size_t i = 0; i < key.length; ++i) {
        if (text[i] != key.text[i] || text[i] == item::kFieldEnd)
            return false;
    }
    return key.length != 0 && text[key.length] == item::kFieldEnd;
}

// Reads exactly one item at `pos` (not null) into `item` and matches its name
// against `key`. A matched item may be incomplete: its value never closed.
// The expected name is compared in place, so a matching item's name is never
// searched for its ";". An item whose name differs (which is never the key:
// a name that equals the key starts with it) is only read to its name's end.
QEL_INLINE_READER ItemMatch MatchOne(char* pos, const KeyMatch& key, ItemView& item) {
    char* tagEnd = std::strchr(pos, item::kFieldEnd);
    if (tagEnd != nullptr && StartsWithName(tagEnd + 1, key)) {
        item.tag = pos;
        item.tagLength = static_cast<std::size_t>(tagEnd - pos);
        item.name = tagEnd + 1;
        item.nameLength = key.length;
        char* value = tagEnd + 1 + key.length + 1;
        item.value = value;
        char* end = std::strchr(value, item::kFieldEnd);
        if (end == nullptr) {
            item.fields = 2;
            return ItemMatch::kMatched;
        }
        item.valueLength = static_cast<std::size_t>(end - value);
        item.fields = 3;
        item.next = end + 1;
        return ItemMatch::kMatched;
    }
    // Another name when the name is closed and not empty; its value is not
    // needed to tell, so it is not searched.
    if (tagEnd == nullptr)
        return ItemMatch::kUnreadable;
    const char* nameEnd = std::strchr(tagEnd + 1, item::kFieldEnd);
    return nameEnd == nullptr || nameEnd == tagEnd + 1 ? ItemMatch::kUnreadable
                                                       : ItemMatch::kOtherName;
}

// compareItem's contract: the next position, `pos` when the item has another
// name, null when nothing can be read. A matched whole item is handed to
// `matched`; a matched item whose value never closed gives `unclosed()`
// and null, which ends every reading chain.
template <class Matched, class Unclosed>
QEL_INLINE_READER char* CompareOne(char* pos, const char* key, Matched matched, Unclosed unclosed) {
    if (pos == nullptr)
        return nullptr;
    ItemView item;
    switch (MatchOne(pos, PathKey(key), item)) {
        case ItemMatch::kUnreadable:
            return nullptr;
        case ItemMatch::kOtherName:
            return pos;
        case ItemMatch::kMatched:
            break;
    }
    if (!item.complete()) {
        unclosed();
        return nullptr;
    }
    matched(item);
    return item.next;
}

// compareItem for each kind of field, inline so that readers with literal
// keys have them measured at compile time. A string item whose value never
// closed empties the value; a number is 0 when the item has another name.
QEL_INLINE_READER char* ReadItem(char* pos, const char* key, std::string& value) {
    return CompareOne(
        pos, key, [&](const ItemView& item) { item.AssignValue(value); }, [&] { value.clear(); });
}

QEL_INLINE_READER char* ReadItem(char* pos, const char* key, bool& value) {
    value = false;
    return CompareOne(
        pos, key,
        [&](const ItemView& item) {
            value = item.ValueEquals(item::kTrue, sizeof item::kTrue - 1);
        },
        [] {});
}

QEL_INLINE_READER char* ReadItem(char* pos, const char* key, int& value) {
    char* next = CompareOne(
        pos, key, [&](const ItemView& item) { value = static_cast<int>(ParseDecimal(item)); },
        [] {});
    if (next == pos && pos != nullptr)
        value = 0;  // another item: the number of an empty value
    return next;
}

// The rules by which the array readers split a "!#"-joined value.
struct SplitRules {
    bool emptyGivesOneElement;  // an empty value yields one empty element
    bool cutLastAtFieldEnd;     // the last element ends at its first ";"
};

// SplitArrayValue of the unescaped value, read straight from the item text:
// a "!#" never overlaps a "%!@", so splitting first and unescaping each
// element gives the same elements, and the first ";" of the last element
// is its first "%!@".
inline void SplitRawArray(const char* value, std::size_t length, SplitRules rules,
                          std::vector<std::string>& out) {
    if (length == 0) {
        if (rules.emptyGivesOneElement)
            out.emplace_back();
        return;
    }
    const char* const end = value + length;
    auto nextSeparator = [end](const char* from) {
        for (const char* p = from;
             (p = static_cast<const char*>(std::memchr(p, '!', end - p))) != nullptr; ++p) {
            if (end - p >= 2 && p[1] == item::kArraySeparator[1])
                return p;
        }
        return end;
    };
    std::size_t count = 1;
    for (const char* p = nextSeparator(value); p != end; p = nextSeparator(p + 2))
        ++count;
    out.reserve(out.size() + count);
    // Most values hold no "%": then no element needs unescaping or cutting.
    const bool escaped = std::memchr(value, '%', length) != nullptr;
    auto element = [&](const char* from, const char* to) {
        out.push_back(escaped ? Unescaped(from, to - from) : std::string(from, to));
    };
    const char* start = value;
    for (std::size_t i = 1; i < count; ++i) {
        const char* stop = nextSeparator(start);
        element(start, stop);
        start = stop + item::kArraySeparatorLength;
    }
    const char* stop = end;
    if (escaped && rules.cutLastAtFieldEnd) {
        const char* escape = static_cast<const char*>(
            memmem(start, end - start, item::kEscapedFieldEnd, item::kEscapedFieldEndLength));
        if (escape != nullptr)
            stop = escape;
    }
    element(start, stop);
}

inline void SplitRawArray(const ItemView& item, SplitRules rules, std::vector<std::string>& out) {
    SplitRawArray(item.value, item.valueLength, rules, out);
}

// setStringArray's rules: an empty value gives no element, and the last
// element is kept whole.
constexpr SplitRules kSetStringArraySplit = {/*emptyGivesOneElement=*/false,
                                             /*cutLastAtFieldEnd=*/false};

// setStringArray's reading, inline for literal keys: the elements are added
// to `values`, which an item of another name empties.
QEL_INLINE_READER char* ReadItem(char* pos, const char* key, std::vector<std::string>& values) {
    char* next = CompareOne(
        pos, key, [&](const ItemView& item) { SplitRawArray(item, kSetStringArraySplit, values); },
        [] {});
    if (next == pos && pos != nullptr)
        values.clear();
    return next;
}

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
