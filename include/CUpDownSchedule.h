// CUpDownSchedule: the codec of the update manager's settings records
// (download setting, download and update schedules, update priority) and of
// the update-plan, module-registration and conformity replies.
//
// Each record travels as one section: a "class" item named after the
// section, then one item per field in declaration order. Writers append to
// the caller's string; readers fill the caller's records in place and read
// exactly one item per field, so a missing or misplaced item is skipped
// without moving on. Objects that the property-object decoders create belong
// to the caller's object.
//
// One object serves one caller at a time; it keeps nothing between calls.
#ifndef QEL_CUPDOWNSCHEDULE_H
#define QEL_CUPDOWNSCHEDULE_H

#include <string>

#include "CSerializedMsg.h"
#include "IWbemClassObject.h"
#include "QelExport.h"
#include "ScheduleRecords.h"

class QEL_SOMIF_API CUpDownSchedule : public CSerializedMsg {
public:
    explicit CUpDownSchedule(std::string traceName);
    virtual ~CUpDownSchedule();

    // --- Settings sections: writers append to `out` ---------------------------

    // The "Velmora_PriorityUpdateParam" section.
    void toString(const CVelmora_PriorityUpdateParam& param, std::string& out);
    // The "UpdateSchedule" section.
    void toString(const CVELMORA_UpdateSchedule& schedule, std::string& out);
    // The "DownloadSetting" section.
    void toString(const CVELMORA_DownloadSetting& setting, std::string& out);
    // The "DownloadSchedule" section, then the "DownloadSetting" section.
    void toString(const CVELMORA_DownloadSetting& setting, const CVELMORA_DownloadSchedule& schedule,
                  std::string& out);

    // --- Settings sections: readers fill the records in place ---------------
    // One item per field, in order; a missing item leaves a string field as
    // it was, sets a number to 0 (while items remain) and a flag to false.

    // The five priority fields, starting at the "AppKey" item itself.
    void toObject(char* pos, CVelmora_PriorityUpdateParam& param);
    // An "UpdateSchedule" section.
    void toObject(char* pos, CVELMORA_UpdateSchedule& schedule);
    // A "DownloadSchedule" section followed by a "DownloadSetting" section.
    void toObject(char* pos, CVELMORA_DownloadSchedule& schedule, CVELMORA_DownloadSetting& setting);

private:
    IWbemClassObject m_writeTarget;  // receiver of the item writers; never filled
    std::string m_traceName;
};

#endif  // QEL_CUPDOWNSCHEDULE_H
