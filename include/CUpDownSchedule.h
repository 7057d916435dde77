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

private:
    IWbemClassObject m_writeTarget;  // receiver of the item writers; never filled
    std::string m_traceName;
};

#endif  // QEL_CUPDOWNSCHEDULE_H
