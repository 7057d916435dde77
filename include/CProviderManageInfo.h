// CProviderManageInfo: the codec of the provider-management records of
// device and tool providers: records to text, text to records, and text to
// property-object trees.
//
// Writers append to the caller's string. Readers fill the caller's records or
// append to the caller's object; every nested object and list that they
// create belongs to that object and is freed with it.
//
// One object serves one caller at a time.
#ifndef QEL_CPROVIDERMANAGEINFO_H
#define QEL_CPROVIDERMANAGEINFO_H

#include <string>

#include "CSerializedMsg.h"
#include "IWbemClassObject.h"
#include "ProviderManageRecords.h"
#include "QelExport.h"

class QEL_SOMIF_API CProviderManageInfo : public CSerializedMsg {
public:
    explicit CProviderManageInfo(std::string traceName);
    virtual ~CProviderManageInfo();

private:
    IWbemClassObject m_writeTarget;  // receiver of the item writers; never filled
    std::string m_traceName;
    bool m_isDevice;  // set by the property-object reader before it is read
};

#endif  // QEL_CPROVIDERMANAGEINFO_H
