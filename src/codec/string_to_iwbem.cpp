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
            } else if (item.TagEquals(kTagString)) {
                target->push(item.Name(), item.Value());
            } else if (item.TagEquals(kTagInt)) {
                target->push(item.Name(), static_cast<int>(qel::ParseDecimal(item.Value())));
            } else if (item.TagEquals(kTagLong)) {
                target->push(item.Name(), qel::ParseDecimal(item.Value()));
            } else if (item.TagEquals(kTagULong)) {
                target->push(item.Name(),
                             static_cast<unsigned long>(qel::ParseDecimal(item.Value())));
            } else if (item.TagEquals(kTagBool)) {
                target->push(item.Name(), item.Value() == kTrue);
            } else if (item.TagEquals(kTagStringArray)) {
                std::vector<std::string> elements;
                qel::SplitArrayValue(item.Value(), kDecoderSplit, elements);
                target->push(item.Name(), std::move(elements));
            } else {
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
