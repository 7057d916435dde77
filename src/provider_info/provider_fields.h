// Names of the provider-management items and lists.
#ifndef QEL_SRC_PROVIDER_INFO_PROVIDER_FIELDS_H
#define QEL_SRC_PROVIDER_INFO_PROVIDER_FIELDS_H

namespace qel {
namespace pm {

constexpr const char kDevProvider[] = "DevProviderManageInfo";
constexpr const char kToolProvider[] = "ToolProviderManageInfo";

constexpr const char kProviderName[] = "ProviderName";
constexpr const char kProviderVendorName[] = "ProviderVendorName";
constexpr const char kProviderVersion[] = "ProviderVersion";

constexpr const char kDeviceInfo[] = "DeviceInfo";
constexpr const char kToolInfo[] = "ToolInfo";
constexpr const char kLinkAppInfo[] = "LinkAppInfo";
constexpr const char kModuleInfo[] = "ModuleInfo";
constexpr const char kRepositoryInfo[] = "RepositoryInfo";
constexpr const char kDependencyInfoSelf[] = "DependencyInfoSelf";
constexpr const char kDependencyInfoOther[] = "DependencyInfoOther";

constexpr const char kVendorName[] = "VendorName";
constexpr const char kUniqueName[] = "UniqueName";
constexpr const char kDeviceId[] = "DeviceId";
constexpr const char kDeviceName[] = "DeviceName";
constexpr const char kDeviceVendorName[] = "DeviceVendorName";
constexpr const char kHardwareVersion[] = "HardwareVersion";
constexpr const char kExtendedInfo[] = "ExtendedInfo";

constexpr const char kApplicationName[] = "ApplicationName";
constexpr const char kExecutePath[] = "ExecutePath";
constexpr const char kDescriptionFilePath[] = "DescriptionFilePath";

constexpr const char kModuleKind[] = "ModuleKind";
constexpr const char kModuleName[] = "ModuleName";
constexpr const char kUpdatePriority[] = "UpdatePriority";
constexpr const char kUpdateStatus[] = "UpdateStatus";
constexpr const char kUpdateProgress[] = "UpdateProgress";

constexpr const char kApplyKind[] = "ApplyKind";
constexpr const char kVendorVersion[] = "VendorVersion";
constexpr const char kDisplayName[] = "DisplayName";
constexpr const char kModulePath[] = "ModulePath";
constexpr const char kPriority[] = "Priority";
constexpr const char kReqProviderVersion[] = "ReqProviderVersion";
constexpr const char kRebootAfterPreUpdate[] = "RebootAfterPreUpdate";
constexpr const char kRebootAfterUpdate[] = "RebootAfterUpdate";
constexpr const char kRebootAfterRestore[] = "RebootAfterRestore";
constexpr const char kRecovery[] = "Recovery";
constexpr const char kModuleFileName[] = "ModuleFileName";
constexpr const char kManualFileName[] = "ManualFileName";
constexpr const char kReleasenotesFileName[] = "ReleasenotesFileName";

constexpr const char kUpperVendorVersion[] = "UpperVendorVersion";

// Type fields of the list headers that the writer puts in front of a list.
constexpr const char kLinkAppListTag[] = "CVelmora_LinkApplicationInfo[]";
constexpr const char kModuleListTag[] = "CVelmora_ManageModuleInfo[]";
constexpr const char kRepositoryListTag[] = "CVelmora_ManageRepositoryInfo[]";
constexpr const char kDependencyListTag[] = "CVelmora_DependencyInfo[]";

}  // namespace pm
}  // namespace qel

#endif  // QEL_SRC_PROVIDER_INFO_PROVIDER_FIELDS_H
