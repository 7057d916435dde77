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
#include <vector>

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
    void toString(const CVELMORA_DownloadSetting& setting,
                  const CVELMORA_DownloadSchedule& schedule, std::string& out);

    // --- Settings sections: readers fill the records in place ---------------
    // One item per field, in order; a missing item leaves a string field as
    // it was, sets a number to 0 (while items remain) and a flag to false.

    // The five priority fields, starting at the "AppKey" item itself.
    void toObject(char* pos, CVelmora_PriorityUpdateParam& param);
    // An "UpdateSchedule" section.
    void toObject(char* pos, CVELMORA_UpdateSchedule& schedule);
    // A "DownloadSchedule" section followed by a "DownloadSetting" section.
    void toObject(char* pos, CVELMORA_DownloadSchedule& schedule,
                  CVELMORA_DownloadSetting& setting);

    // --- Property-object decoders -------------------------------------------------
    // Every object they create belongs to `obj` afterwards.

    // A "class[]" item, then plans delimited by "ProviderName" (exactly where
    // the previous plan's "DependencyName" ended) and their "DependencyName";
    // a plan's other fields are searched to the end of the text. Adds the
    // class array "UpdatePlansList" (an empty one when no plan follows).
    void String2UpdatePlans(char* pos, IWbemClassObject& obj);
    // "AppKey", then "UpdateModuleRegistInfo" and its modules (VendorName,
    // UniqueName, ModuleKind, VendorVersion, ModulePath); an unmatched field
    // of a module is added as an empty string.
    void String2RegisterUpdateModule(char* pos, IWbemClassObject& obj);
    // Record sections: one nested object per "class" item, holding the
    // section's "string", "int" and "bool" items. Items before the first
    // section have no object to go into and are skipped.
    virtual void String2IWbem(char* text, IWbemClassObject& obj);

    // --- Conformity trees -------------------------------------------------------------

    // The conformity list into "UpdateModuleConformityList".
    void toObject2(char* pos, IWbemClassObject& obj);
    // The conformity input: "AppKey" and "CheckUpdateModuleConformityInput".
    void toObject(char* pos, IWbemClassObject& obj);
    // Block readers: read the block's items from `pos` (just after the item
    // that introduced the block), attach the block to `module` and return
    // where they stopped. Objects that never reach the tree are freed.
    char* SetUpdateAttrInfo(char* pos, IWbemClassObject* module);
    char* SetUpdateLinkInfo(char* pos, IWbemClassObject* module);
    char* SetUpdateFileInfo(char* pos, IWbemClassObject* module);
    char* SetUpdateDepoInfo(char* pos, IWbemClassObject* module);
    // Module references, appended to `list`.
    char* SetUpdateShareInfo(char* pos, std::vector<IWbemClassObject*>* list);
    char* SetUpdateSimuInfo(char* pos, std::vector<IWbemClassObject*>* list);
};

#endif  // QEL_CUPDOWNSCHEDULE_H
