// Records of the service's list replies: installed versions, update plans
// and the version-update log. Plain value classes.
#ifndef QEL_VERSIONLISTRECORDS_H
#define QEL_VERSIONLISTRECORDS_H

#include <string>

// One installed file of the suite and its version.
class CVELMORA_QelVersionInfo {
  public:
    std::string GroupName;
    std::string FileName;
    std::string FileVersion;
};

// One planned update of one module on one device or tool.
class CVELMORA_UpdatePlans {
  public:
    std::string ProviderName;
    std::string VendorName;
    std::string UniqueName;
    std::string DeviceId;
    std::string ModuleKind;
    int UpdatePriority = 0;
    std::string CurrentVendorVersion;
    std::string NextVendorVersion;
    std::string DisplayName;
    int UpdateJudgment = 0;
    std::string DependencyName;
};

// One entry of the version-update log.
class CVELMORA_VersionUpdateLog {
  public:
    std::string ProviderName;
    std::string DateTime;
    std::string VendorName;
    std::string UniqueName;
    std::string ModuleKind;
    std::string BeforeVersion;
    std::string AfterVersion;
};

#endif  // QEL_VERSIONLISTRECORDS_H
