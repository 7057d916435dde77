// CVersionUpLog: the codec of the service's list replies (installed
// versions, update plans, the version-update log) into typed records.
//
// A list body is a header item followed by one item per field of every
// record. The readers append to the caller's vector and never clear it; a
// record that does not start where one is expected ends the list.
//
// One object serves one caller at a time; it keeps nothing between calls.
#ifndef QEL_CVERSIONUPLOG_H
#define QEL_CVERSIONUPLOG_H

#include <string>
#include <vector>

#include "CSerializedMsg.h"
#include "QelExport.h"
#include "VersionListRecords.h"

class QEL_SOMIF_API CVersionUpLog : public CSerializedMsg {
  public:
    explicit CVersionUpLog(std::string traceName);
    virtual ~CVersionUpLog();

    // Each reader appends the records of a list body ("QelVersionInfoList",
    // "UpdatePlansList" or "VersionUpdateLogList" header, optional) to `list`.
    void toObject(char* body, std::vector<CVELMORA_QelVersionInfo>& list);
    void toObject(char* body, std::vector<CVELMORA_UpdatePlans>& list);
    void toObject(char* body, std::vector<CVELMORA_VersionUpdateLog>& list);
};

#endif  // QEL_CVERSIONUPLOG_H
