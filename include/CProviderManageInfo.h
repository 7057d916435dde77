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
#include <vector>

#include "CSerializedMsg.h"
#include "IWbemClassObject.h"
#include "ProviderManageRecords.h"
#include "QelExport.h"

class QEL_SOMIF_API CProviderManageInfo : public CSerializedMsg {
  public:
    explicit CProviderManageInfo(std::string traceName);
    virtual ~CProviderManageInfo();

    // --- Records to text ---------------------------------------------------------
    // Every nested field is named by a path ("DeviceInfo[0]/UniqueName"); lists
    // are announced by header items; string arrays end in ";#". Peers that
    // read the plain-name layout below do not read this text.

    void toString(const CVelmora_DevProviderManageInfo& info, std::string& text);
    void toString(const CVelmora_ToolProviderManageInfo& info, std::string& text);
    void getDeviceInfo(const CVelmora_DeviceInfo& device, int index, std::string& text);
    void getToolInfo(const CVelmora_ToolInfo& tool, int index, std::string& text);
    void getLinkAppInfo(const CVelmora_LinkApplicationInfo& app, int index, std::string& text);
    void getModuleInfo(const CVelmora_ManageModuleInfo& module, int index, std::string& text);
    void getRepositoryInfo(const CVelmora_ManageRepositoryInfo& entry, int index,
                           std::string& text);
    void getDependencyInfo(const CVelmora_DependencyInfo& dep, const char* listName, int index,
                           std::string& text);

    // --- Text to records -------------------------------------------------------------
    // Strictly positional: one item per field at the cursor, plain names,
    // optional element headers; a list ends where its next element's first
    // field is missing. Lists are appended to. Each reader returns the
    // position after what it consumed (null once the text cannot be read).

    void toObject(char* text, CVelmora_DevProviderManageInfo& info);
    void toObject(char* text, CVelmora_ToolProviderManageInfo& info);
    char* setManageInfo(char* pos, CVelmora_DevProviderManageInfo& info);
    char* setManageInfo(char* pos, CVelmora_ToolProviderManageInfo& info);
    char* setDeviceInfo(char* pos, CVelmora_DevProviderManageInfo& info);
    char* setToolInfo(char* pos, CVelmora_ToolProviderManageInfo& info);
    char* setLinkAppInfo(char* pos, CVelmora_DeviceInfo& device);
    char* setLinkAppInfo(char* pos, CVelmora_ToolInfo& tool);
    char* setModuleInfo(char* pos, CVelmora_DeviceInfo& device);
    char* setModuleInfo(char* pos, CVelmora_ToolInfo& tool);
    char* setRepositoryInfo(char* pos, CVelmora_ManageModuleInfo& module);
    char* setDependencyInfo(char* pos, const char* listName,
                            std::vector<CVelmora_DependencyInfo>& deps);

    // --- Text to property objects ------------------------------------------------------
    // Adds "DevProviderManageInfo" (or "ToolProviderManageInfo") to `out`: a
    // new object with the provider's fields and its lists, every list a
    // std::vector<IWbemClassObject*>* of new objects. `out` owns the tree.
    // List headers and most fields are searched forward, so a field missing
    // from one element may be taken from a later one.

    void toObject(char* text, IWbemClassObject& out);
    char* setManageInfo(char* pos, IWbemClassObject& provider);
    char* setDeviceInfo(char* pos, IWbemClassObject& provider);
    char* setToolInfo(char* pos, IWbemClassObject& provider);
    char* setLinkAppInfo(char* pos, IWbemClassObject& owner);
    char* setModuleInfo(char* pos, IWbemClassObject& owner);
    char* setRepositoryInfo(char* pos, IWbemClassObject& module);
    char* setDependencyInfo(char* pos, const char* listName, IWbemClassObject& entry);

  private:
    bool isDevice_;  // set by the property-object reader before it is read
};

#endif  // QEL_CPROVIDERMANAGEINFO_H
