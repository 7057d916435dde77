#include "CIWbemUtil.h"

#include <string>

namespace {
const char kReturnValue[] = "ReturnValue";
}

HRESULT CIWbemUtil::setReturnValueToIWbemClassObject(IWbemClassObject* obj, unsigned long value) {
    if (obj == nullptr)
        return kInvalidParameter;
    const long stored = static_cast<long>(value);
    if (boost::any* existing = obj->Get(kReturnValue)) {
        *existing = stored;
    } else {
        obj->push(kReturnValue, stored);
    }
    return 0;
}

HRESULT CIWbemUtil::setParameterClassArrayToIWbemClassObject(IWbemClassObject* obj,
                                                             const char* name,
                                                             std::vector<IWbemClassObject*>* list) {
    if (obj == nullptr) {
        if (list != nullptr) {
            for (IWbemClassObject* element : *list)
                delete element;
            delete list;
        }
        return kInvalidParameter;
    }
    obj->push(name != nullptr ? name : "", list);
    return 0;
}
