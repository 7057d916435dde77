// Provider-management records: what a device or tool provider looks after.
//
// Plain value classes: public fields, default construction, deep copies. A
// record owns everything inside it. Field names are also the names under
// which the fields travel in the item text.
#ifndef QEL_PROVIDERMANAGERECORDS_H
#define QEL_PROVIDERMANAGERECORDS_H

#include <string>
#include <vector>

// One dependency of a repository entry: the module depended on and the
// lower and upper version bounds.
class CVelmora_DependencyInfo {
  public:
    std::string ProviderName;
    std::string VendorName;
    std::string UniqueName;
    std::string ModuleKind;
    std::string ModuleName;
    std::string VendorVersion;
    std::string UpperVendorVersion;
};

// One repository entry: an update package for a module.
class CVelmora_ManageRepositoryInfo {
  public:
    std::string ApplyKind;
    std::string HardwareVersion;
    std::string DisplayName;
    std::string Reserved;  // carried and copied, never read or written by a codec
    std::string VendorVersion;
    std::string ModulePath;
    int Priority = 0;
    std::string ReqProviderVersion;
    std::string RebootAfterPreUpdate;
    std::string RebootAfterUpdate;
    std::string RebootAfterRestore;
    bool Recovery = false;
    std::vector<std::string> ModuleFileName;
    std::vector<std::string> ManualFileName;
    std::vector<std::string> ReleasenotesFileName;
    std::vector<CVelmora_DependencyInfo> DependencyInfoSelf;
    std::vector<CVelmora_DependencyInfo> DependencyInfoOther;
};

// One module managed for a device or tool.
class CVelmora_ManageModuleInfo {
  public:
    std::string ModuleKind;
    std::string ModuleName;
    int UpdatePriority = 0;
    int UpdateStatus = 0;
    int UpdateProgress = 0;
    std::vector<CVelmora_ManageRepositoryInfo> RepositoryInfo;
};

// An application linked to a device or tool.
class CVelmora_LinkApplicationInfo {
  public:
    std::string ApplicationName;
    std::string ExecutePath;
    std::string DescriptionFilePath;
    std::string Reserved;  // carried and copied, never read or written by a codec
};

// One managed device. DeviceName and DeviceVendorName come from the PCI ID
// database, not from the service.
class CVelmora_DeviceInfo {
  public:
    std::string VendorName;
    std::string UniqueName;
    std::string DeviceId;
    std::string DeviceName;
    std::string DeviceVendorName;
    std::string HardwareVersion;
    std::vector<std::string> ExtendedInfo;
    std::vector<CVelmora_LinkApplicationInfo> LinkAppInfo;
    std::vector<CVelmora_ManageModuleInfo> ModuleInfo;
};

// One managed tool.
class CVelmora_ToolInfo {
  public:
    std::string VendorName;
    std::string UniqueName;
    std::vector<std::string> ExtendedInfo;
    std::vector<CVelmora_LinkApplicationInfo> LinkAppInfo;
    std::vector<CVelmora_ManageModuleInfo> ModuleInfo;
};

// A device provider and the devices that it manages.
class CVelmora_DevProviderManageInfo {
  public:
    std::string ProviderName;
    std::string ProviderVendorName;
    std::string ProviderVersion;
    std::vector<CVelmora_DeviceInfo> DeviceInfo;
};

// A tool provider and the tools that it manages.
class CVelmora_ToolProviderManageInfo {
  public:
    std::string ProviderName;
    std::string ProviderVendorName;
    std::string ProviderVersion;
    std::vector<CVelmora_ToolInfo> ToolInfo;
};

#endif  // QEL_PROVIDERMANAGERECORDS_H
