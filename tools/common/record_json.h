// JSON mapping of the suite's record classes, shared by somd (scenario and
// state files) and somctl (--json output). Keys are the records' field
// names; missing keys keep the field's default.
#ifndef QEL_TOOLS_COMMON_RECORD_JSON_H
#define QEL_TOOLS_COMMON_RECORD_JSON_H

#include <nlohmann/json.hpp>

#include "ProviderManageRecords.h"
#include "ScheduleRecords.h"
#include "VersionListRecords.h"

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(CVelmora_DependencyInfo, ProviderName, VendorName,
                                                UniqueName, ModuleKind, ModuleName, VendorVersion,
                                                UpperVendorVersion)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(CVelmora_ManageRepositoryInfo, ApplyKind,
                                                HardwareVersion, DisplayName, VendorVersion,
                                                ModulePath, Priority, ReqProviderVersion,
                                                RebootAfterPreUpdate, RebootAfterUpdate,
                                                RebootAfterRestore, Recovery, ModuleFileName,
                                                ManualFileName, ReleasenotesFileName,
                                                DependencyInfoSelf, DependencyInfoOther)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(CVelmora_ManageModuleInfo, ModuleKind, ModuleName,
                                                UpdatePriority, UpdateStatus, UpdateProgress,
                                                RepositoryInfo)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(CVelmora_LinkApplicationInfo, ApplicationName,
                                                ExecutePath, DescriptionFilePath)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(CVelmora_DeviceInfo, VendorName, UniqueName,
                                                DeviceId, DeviceName, DeviceVendorName,
                                                HardwareVersion, ExtendedInfo, LinkAppInfo,
                                                ModuleInfo)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(CVelmora_ToolInfo, VendorName, UniqueName,
                                                ExtendedInfo, LinkAppInfo, ModuleInfo)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(CVelmora_DevProviderManageInfo, ProviderName,
                                                ProviderVendorName, ProviderVersion, DeviceInfo)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(CVelmora_ToolProviderManageInfo, ProviderName,
                                                ProviderVendorName, ProviderVersion, ToolInfo)

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(CVELMORA_DownloadSetting, DownloadType, WebSiteUrl,
                                                ProxyAddress, ProxyPort, ProxyUser, ProxyPassword,
                                                CacheServerPath, CacheServerUser,
                                                CacheServerPassword, TempDriveLetter,
                                                ExternalMediaPath)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(CVELMORA_DownloadSchedule, IsAutoSetting,
                                                RepeatType, DayOfWeek, Date, Time)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(CVELMORA_UpdateSchedule, IsAutoSetting, RepeatType,
                                                DayOfWeek, Date, Time)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(CVelmora_PriorityUpdateParam, AppKey,
                                                UpdatePriority, VendorName, DeviceID, ModuleKind)

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(CVELMORA_QelVersionInfo, GroupName, FileName,
                                                FileVersion)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(CVELMORA_UpdatePlans, ProviderName, VendorName,
                                                UniqueName, DeviceId, ModuleKind, UpdatePriority,
                                                CurrentVendorVersion, NextVendorVersion,
                                                DisplayName, UpdateJudgment, DependencyName)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(CVELMORA_VersionUpdateLog, ProviderName, DateTime,
                                                VendorName, UniqueName, ModuleKind, BeforeVersion,
                                                AfterVersion)

#endif  // QEL_TOOLS_COMMON_RECORD_JSON_H
