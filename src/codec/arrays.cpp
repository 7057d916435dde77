// CSerializedMsg: array paths, string arrays and single items.
#include <string>

#include "CSerializedMsg.h"
#include "codec_signatures.h"
#include "common/trace.h"
#include "item_view.h"

namespace {

const qel::SplitRules kStringArraySplit = {/*emptyGivesOneElement=*/true,
                                           /*cutLastAtFieldEnd=*/true};

}  // namespace

std::string CSerializedMsg::getClassArrayName(const char* name, int index) {
    // Built by hand: a stream here costs more than the rest of a record.
    std::string path = name != nullptr ? name : "";
    path += '[';
    path += std::to_string(index);
    path += "]/";
    return path;
}

char* CSerializedMsg::setStringArray(char* pos, const std::string& prefix, const char* key,
                                     std::vector<std::string>& values) {
    std::string path;
    return qel::ReadItem(pos, qel::PrefixedKey(prefix, key, path), values);
}

void CSerializedMsg::StringArray2Array(char* text, std::vector<std::string>& values) {
    if (text == nullptr) {
        qel::TraceMessage(qel::kFixedSource, qel::kLevelError, qel::sig::kStringArray2Array,
                          qel::sig::kMsgParameterNull);
        return;
    }
    for (char* pos = text;;) {
        qel::ItemView item;
        qel::ScanItem(pos, item);
        if (!item.complete() || !item.TagEquals(qel::item::kTagStringArray))
            return;
        qel::SplitRawArray(item, kStringArraySplit, values);
        pos = item.next;
    }
}

void CSerializedMsg::String2Array(char* text, std::vector<std::string>& values) {
    if (text == nullptr) {
        qel::TraceMessage(qel::kFixedSource, qel::kLevelError, qel::sig::kString2Array,
                          qel::sig::kMsgParameterNull);
        return;
    }
    for (char* pos = text;;) {
        qel::ItemView item;
        qel::ScanItem(pos, item);
        if (!item.complete())
            return;
        values.emplace_back();
        item.AssignValue(values.back());
        pos = item.next;
    }
}

std::string CSerializedMsg::getString(const char* text) {
    if (text == nullptr)
        return std::string();
    qel::ItemView item;
    qel::ScanItem(const_cast<char*>(text), item);  // read only
    return item.complete() ? item.Value() : std::string();
}

bool CSerializedMsg::getBool(const char* text) {
    if (text == nullptr)
        return false;
    qel::ItemView item;
    qel::ScanItem(const_cast<char*>(text), item);  // read only
    return item.complete() && item.valueLength == 1 && item.value[0] == '1';
}
