// CSerializedMsg: the item scanners.
#include <cstring>

#include "CSerializedMsg.h"
#include "item_index.h"
#include "item_view.h"

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
    item.AssignValue(value);
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
    return qel::ReadItem(pos, key, value);
}

char* CSerializedMsg::compareItem(char* pos, const char* key, bool& value) {
    return qel::ReadItem(pos, key, value);
}

char* CSerializedMsg::compareItem(char* pos, const char* key, int& value) {
    return qel::ReadItem(pos, key, value);
}

char* CSerializedMsg::compareItem(char* pos, const char* key, IWbemClassObject& obj) {
    const std::size_t keyLength = std::strlen(key);
    char* next = qel::CompareOne(
        pos, key,
        [&](const qel::ItemView& item) {
            std::string value;
            item.AssignValue(value);
            obj.pushPlain(key, keyLength, std::move(value));
        },
        [] {});
    if (next == pos && pos != nullptr)
        obj.pushPlain(key, keyLength, std::string());
    return next;
}

char* CSerializedMsg::compareItem(char* pos, const std::string& prefix, const char* key,
                                  std::string& value) {
    std::string path;
    return compareItem(pos, qel::PrefixedKey(prefix, key, path), value);
}

char* CSerializedMsg::compareItem(char* pos, const std::string& prefix, const char* key,
                                  bool& value) {
    std::string path;
    return compareItem(pos, qel::PrefixedKey(prefix, key, path), value);
}

char* CSerializedMsg::compareItem(char* pos, const std::string& prefix, const char* key,
                                  int& value) {
    std::string path;
    return compareItem(pos, qel::PrefixedKey(prefix, key, path), value);
}

// Here the prefix does count: the entry is named with the whole path.
char* CSerializedMsg::compareItem(char* pos, const std::string& prefix, const char* key,
                                  IWbemClassObject& obj) {
    return compareItem(pos, (prefix + key).c_str(), obj);
}

bool CSerializedMsg::compareItem2(char* pos, const char* key, std::string& value) {
    if (pos == nullptr)
        return false;
    const qel::KeyMatch match = qel::PathKey(key);
    std::size_t index = 0;
    if (searchIndex_ != nullptr && searchIndex_->Locate(pos, &index)) {
        const qel::ItemView* item = searchIndex_->Find(index, match);
        if (item == nullptr)
            return false;
        item->AssignValue(value);
        return true;
    }
    while (*pos != '\0') {
        qel::ItemView item;
        qel::ScanItem(pos, item);
        if (!item.complete())
            return false;
        if (item.NameEquals(match.text, match.length)) {
            item.AssignValue(value);
            return true;
        }
        pos = item.next;
    }
    return false;
}

char* CSerializedMsg::getParam(char* pos, const char* key, std::string& value) {
    const qel::KeyMatch match = qel::ExactKey(key);
    std::size_t index = 0;
    if (pos != nullptr && searchIndex_ != nullptr && searchIndex_->Locate(pos, &index)) {
        const qel::ItemView* item = searchIndex_->Find(index, match);
        if (item == nullptr) {
            value.clear();
            return nullptr;
        }
        item->AssignValue(value);
        return item->next;
    }
    while (pos != nullptr) {
        qel::ItemView item;
        qel::ScanItem(pos, item);
        if (!item.complete())
            break;
        if (item.NameEquals(match.text, match.length)) {
            item.AssignValue(value);
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
            item.AssignValue(value);
            return item.next;
        }
    }
    value.clear();
    return nullptr;
}
