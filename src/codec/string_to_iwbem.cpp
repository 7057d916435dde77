// CSerializedMsg: the generic decoder of a body into a property object.
#include "CSerializedMsg.h"
#include "codec_signatures.h"
#include "common/trace.h"
#include "item_view.h"

namespace {

const qel::SplitRules kDecoderSplit = {/*emptyGivesOneElement=*/false,
                                       /*cutLastAtFieldEnd=*/true};

void Unsupported(const char* message, const qel::ItemView& item) {
    qel::TraceMessage(qel::kFixedSource, qel::kLevelError, qel::sig::kString2IWbem, message,
                      item.Name().c_str());
}

// Appends a plain item's entry, its name and value built straight from the
// text; false for a tag that is not a plain value.
bool PushPlain(const qel::ItemView& item, IWbemClassObject& target) {
    using namespace qel::item;
    auto push = [&](auto&& value) {
        target.pushPlain(item.name, item.nameLength, std::forward<decltype(value)>(value));
    };
    if (item.TagEquals(kTagString)) {
        push(item.Value());
    } else if (item.TagEquals(kTagInt)) {
        push(static_cast<int>(qel::ParseDecimal(item)));
    } else if (item.TagEquals(kTagLong)) {
        push(qel::ParseDecimal(item));
    } else if (item.TagEquals(kTagULong)) {
        push(static_cast<unsigned long>(qel::ParseDecimal(item)));
    } else if (item.TagEquals(kTagBool)) {
        push(item.ValueEquals(kTrue, sizeof kTrue - 1));
    } else if (item.TagEquals(kTagStringArray)) {
        std::vector<std::string> elements;
        qel::SplitRawArray(item, kDecoderSplit, elements);
        push(std::move(elements));
    } else {
        return false;
    }
    return true;
}

}  // namespace

void CSerializedMsg::String2IWbem(char* text, IWbemClassObject& obj) {
    using namespace qel::item;
    if (text == nullptr) {
        qel::TraceMessage(qel::kFixedSource, qel::kLevelError, qel::sig::kString2IWbem,
                          qel::sig::kMsgParameterNull);
        return;
    }
    // One level of nesting: everything after the first "class"/"class[]"
    // item goes into one nested object, appended to `obj` at the end.
    IWbemClassObject* nested = nullptr;
    std::string nestedName;
    IWbemClassObject* target = &obj;
    try {
        for (char* pos = text;;) {
            qel::ItemView item;
            qel::ScanItem(pos, item);
            if (!item.complete())
                break;
            pos = item.next;
            if (item.TagEquals(kTagClass) || item.TagEquals(kTagClassArray)) {
                if (!nestedName.empty()) {
                    Unsupported(qel::sig::kMsgUnsupportedNode, item);
                    continue;
                }
                if (nested == nullptr)
                    nested = new IWbemClassObject;
                target = nested;
                nestedName = item.Name();
            } else if (!PushPlain(item, *target)) {
                Unsupported(qel::sig::kMsgUnsupportedType, item);
            }
        }
    } catch (...) {
        delete nested;  // only allocation can throw here; nothing may leak
        throw;
    }
    if (nested != nullptr)
        obj.push(nestedName, nested);
}
