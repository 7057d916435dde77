// CIWbemUtil: helpers that write well-known entries into property objects.
#ifndef QEL_CIWBEMUTIL_H
#define QEL_CIWBEMUTIL_H

#include <vector>

#include "IWbemClassObject.h"
#include "QelExport.h"
#include "QelTypes.h"

class QEL_FRAMEWORK_API CIWbemUtil {
  public:
    // Result for a null object.
    static const HRESULT kInvalidParameter = 0x80041008L;

    // Stores (long)value as "ReturnValue": replaces the value of the last
    // existing "ReturnValue" entry, else appends one. Returns 0, or
    // 0x80041008 when `obj` is null.
    static HRESULT setReturnValueToIWbemClassObject(IWbemClassObject* obj, unsigned long value);

    // Appends (name, list); `obj` takes the list and its objects over. A null
    // `obj` gives 0x80041008 and the list is freed, so nothing leaks.
    static HRESULT setParameterClassArrayToIWbemClassObject(IWbemClassObject* obj, const char* name,
                                                            std::vector<IWbemClassObject*>* list);
};

#endif  // QEL_CIWBEMUTIL_H
