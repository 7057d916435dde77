// CSerializedMsg: the item scanners.
#include <cstring>

#include "CSerializedMsg.h"
#include "item_index.h"
#include "item_view.h"

namespace {

enum class Match { kUnreadable, kOtherName, kMatched };

// Reads exactly one item at `pos` (not null) and matches its name against
// `key`. On a match `*value` receives the item's value and `*next` the
// position after it; an item whose name matched but whose value never closed
// gives an empty value and a null `*next`, which ends every reading chain.
Match MatchOne(char* pos, const qel::KeyMatch& key, std::string* value, char** next) {
    qel::ItemView item;
    qel::ScanItem(pos, item);
    if (item.fields < 2 || item.nameLength == 0)
        return Match::kUnreadable;
    if (!item.NameEquals(key.text, key.length))
        return Match::kOtherName;
    if (item.complete()) {
        *value = item.Value();
        *next = item.next;
    } else {
        value->clear();
        *next = nullptr;
    }
    return Match::kMatched;
}

// compareItem's contract on top of MatchOne: next position, `pos` when the
// item has another name, null when nothing can be read.
char* CompareOne(char* pos, const char* key, std::string& value) {
    if (pos == nullptr)
        return nullptr;
    char* next = nullptr;
    switch (MatchOne(pos, qel::PathKey(key), &value, &next)) {
        case Match::kUnreadable:
            return nullptr;
        case Match::kOtherName:
            return pos;
        case Match::kMatched:
            return next;
    }
    return nullptr;
}

}  // namespace

char* CSerializedMsg::getItem(char* pos, std::string& type, std::string& name, std::string& value) {
    if (pos == nullptr)
        return nullptr;
    qel::ItemView item;
    qel::ScanItem(pos, item);
    if (item.fields >= 1)
        type.assign(item.tag, item.tagLength);
    if (item.fields >= 2)
        name.assign(item.name, item.nameLength);
    if (!item.complete())
        return nullptr;
    value = item.Value();
    return item.next;
}

char* CSerializedMsg::getItem(char* pos, std::string& type, std::string& name, int& value) {
    std::string text;
    char* next = getItem(pos, type, name, text);
    if (next != nullptr)
        value = static_cast<int>(qel::ParseDecimal(text));
    return next;
}

char* CSerializedMsg::compareItem(char* pos, const char* key, std::string& value) {
    return CompareOne(pos, key, value);
}

char* CSerializedMsg::compareItem(char* pos, const char* key, bool& value) {
    value = false;
    std::string text;
    char* next = CompareOne(pos, key, text);
    if (next != nullptr)
        value = text == qel::item::kTrue;
    return next;
}

char* CSerializedMsg::compareItem(char* pos, const char* key, int& value) {
    std::string text;
    char* next = CompareOne(pos, key, text);
    if (next != nullptr)
        value = static_cast<int>(qel::ParseDecimal(text));
    return next;
}

char* CSerializedMsg::compareItem(char* pos, const char* key, IWbemClassObject& obj) {
    std::string text;
    char* next = CompareOne(pos, key, text);
    if (next != nullptr)
        obj.push(key, text);
    return next;
}

char* CSerializedMsg::compareItem(char* pos, const std::string& prefix, const char* key,
                                  std::string& value) {
    return compareItem(pos, (prefix + key).c_str(), value);
}

char* CSerializedMsg::compareItem(char* pos, const std::string& prefix, const char* key,
                                  bool& value) {
    return compareItem(pos, (prefix + key).c_str(), value);
}

char* CSerializedMsg::compareItem(char* pos, const std::string& prefix, const char* key,
                                  int& value) {
    return compareItem(pos, (prefix + key).c_str(), value);
}

char* CSerializedMsg::compareItem(char* pos, const std::string& prefix, const char* key,
                                  IWbemClassObject& obj) {
    return compareItem(pos, (prefix + key).c_str(), obj);
}

bool CSerializedMsg::compareItem2(char* pos, const char* key, std::string& value) {
    if (pos == nullptr)
        return false;
    const qel::KeyMatch match = qel::PathKey(key);
    std::size_t index = 0;
    if (m_searchIndex != nullptr && m_searchIndex->Locate(pos, &index)) {
        const qel::ItemView* item = m_searchIndex->Find(index, match);
        if (item == nullptr)
            return false;
        value = item->Value();
        return true;
    }
    while (*pos != '\0') {
        qel::ItemView item;
        qel::ScanItem(pos, item);
        if (!item.complete())
            return false;
        if (item.NameEquals(match.text, match.length)) {
            value = item.Value();
            return true;
        }
        pos = item.next;
    }
    return false;
}

char* CSerializedMsg::getParam(char* pos, const char* key, std::string& value) {
    const qel::KeyMatch match = qel::ExactKey(key);
    std::size_t index = 0;
    if (pos != nullptr && m_searchIndex != nullptr && m_searchIndex->Locate(pos, &index)) {
        const qel::ItemView* item = m_searchIndex->Find(index, match);
        if (item == nullptr) {
            value.clear();
            return nullptr;
        }
        value = item->Value();
        return item->next;
    }
    while (pos != nullptr) {
        qel::ItemView item;
        qel::ScanItem(pos, item);
        if (!item.complete())
            break;
        if (item.NameEquals(match.text, match.length)) {
            value = item.Value();
            return item.next;
        }
        pos = item.next;
    }
    value.clear();
    return nullptr;
}

char* CSerializedMsg::getParam2(char* pos, const char* key, std::string& value) {
    if (pos != nullptr) {
        qel::ItemView item;
        qel::ScanItem(pos, item);
        const qel::KeyMatch match = qel::ExactKey(key);
        if (item.complete() && item.NameEquals(match.text, match.length)) {
            value = item.Value();
            return item.next;
        }
    }
    value.clear();
    return nullptr;
}
