// Every fact of the SOM service protocol, in one place, for the library, the
// reference service (somd) and the command-line client (somctl).
//
// Header-only constants and a few inline helpers: it needs nothing from the
// internal library, so a program built against the installed public library
// can include it too. What it holds:
//   - the request/reply header: format, magic, field widths, fixed length,
//     header buffer size, the reply's header writer (ReplyHeader);
//   - transport limits and result codes of the exchange;
//   - service class names and method names;
//   - reply items, request parameter names and list headers;
//   - the item names of provider texts and of conformity entries;
//   - installation paths: socket configuration, MOF file, process status;
//   - the process-status file's section, keys, values and the codes that
//     GetQELStatus hands back for them.
// The test suite's fake service keeps its own copy of the header layout on
// purpose, as an independent cross-check of these values.
#ifndef QEL_SRC_COMMON_PROTOCOL_H
#define QEL_SRC_COMMON_PROTOCOL_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "QelTypes.h"
#include "message_format.h"

namespace qel {
namespace protocol {

// --- Header ------------------------------------------------------------------
// Header length "%08d", magic "%08lx", class, "/", method, result field,
// body length "%08u". A request carries result 0 in decimal; a reply carries
// the service's result in hexadecimal (kReplyTrailerFormat).
constexpr const char kHeaderFormat[] = "%08d%08lx%s/%s%08d%08u";
constexpr const char kReplyLeadFormat[] = "%08zu%08lx";
constexpr const char kReplyTrailerFormat[] = "%08x%08zu";
constexpr unsigned long kMagic = 0xCAFEFEEDUL;
constexpr const char kMagicText[] = "cafefeed";
// The fixed-width fields, shared with the framework's transport and recorder.
using message_format::kClassMethodSeparator;
using message_format::kFieldWidth;
using message_format::kHeaderFixedLength;
using message_format::kLeadingFieldsLength;
using message_format::kTrailingFieldsLength;
// The library formats a request header into a buffer of this size.
constexpr std::size_t kHeaderBufferSize = 1024;

// True when the header is as long as its own length field says: a class plus
// method name too long for kHeaderBufferSize gives a cut header, never sent.
inline bool HeaderIsWhole(const std::string& header) {
    return header.size() > static_cast<std::size_t>(kFieldWidth) &&
           std::strtoul(header.substr(0, kFieldWidth).c_str(), nullptr, 10) == header.size();
}

// A reply's header: the request's class and method, `result` in hexadecimal.
inline std::string ReplyHeader(const std::string& className, const std::string& method,
                               uint32_t result, std::size_t bodyLength) {
    char lead[2 * kFieldWidth + 1];
    std::snprintf(lead, sizeof lead, kReplyLeadFormat,
                  kHeaderFixedLength + className.size() + method.size(), kMagic);
    char trailer[kTrailingFieldsLength + 1];
    std::snprintf(trailer, sizeof trailer, kReplyTrailerFormat, static_cast<unsigned>(result),
                  bodyLength);
    std::string header;
    header.reserve(kHeaderFixedLength + className.size() + method.size());
    header.append(lead).append(className).append(1, kClassMethodSeparator).append(method);
    return header.append(trailer);
}

// --- Exchange limits and result codes --------------------------------------------------
constexpr unsigned long kReplyBufferSize = 0x400000;     // 4 MiB
constexpr unsigned long kSmallReplyBufferSize = 0x2000;  // 8 KiB

constexpr HRESULT kSendFailed = 0x80081001L;
constexpr HRESULT kReceiveFailed = 0x80081101L;
constexpr unsigned long kTransportFamilyMask = 0x80080000UL;

inline bool IsTransportFamily(HRESULT rc) {
    return (static_cast<unsigned long>(rc) & kTransportFamilyMask) == kTransportFamilyMask;
}
// The 32-bit result taken as signed.
inline bool IsNegative(HRESULT rc) {
    return static_cast<int>(static_cast<unsigned int>(rc)) < 0;
}

// --- Service classes ------------------------------------------------------------------
constexpr const char kUpdateManager[] = "VELMORA_UpdateManager";
constexpr const char kToolServiceWD[] = "VELMORA_ToolServiceWD";
constexpr const char kLogManager[] = "VELMORA_LogManager";
constexpr const char kQelVersion[] = "VELMORA_QelVersion";

// --- Methods ------------------------------------------------------------------------
namespace method {
// VELMORA_UpdateManager
constexpr const char kSetAutoDownloadSetting[] = "SetAutoDownloadSetting";
constexpr const char kGetAutoDownloadSetting[] = "GetAutoDownloadSetting";
constexpr const char kSetAutoUpdateSetting[] = "SetAutoUpdateSetting";
constexpr const char kGetAutoUpdateSetting[] = "GetAutoUpdateSetting";
constexpr const char kDownloadAll[] = "DownloadAll";
constexpr const char kUpdateAll[] = "UpdateAll";
constexpr const char kRollbackAll[] = "RollbackAll";
constexpr const char kExecuteReboot[] = "ExecuteReboot";
// VELMORA_UpdateManager or a provider class
constexpr const char kSetUpdatePriority[] = "SetUpdatePriority";
constexpr const char kGetUpdatePlans[] = "GetUpdatePlans";
constexpr const char kGetOperatingAuthority[] = "GetOperatingAuthority";
constexpr const char kReleaseOperatingAuthority[] = "ReleaseOperatingAuthority";
constexpr const char kCheckUpdateModuleConformity[] = "CheckUpdateModuleConformity";
constexpr const char kGetProviderManageInfo[] = "GetProviderManageInfo";
// Provider methods relayed from WBEM callers
constexpr const char kReboot[] = "Reboot";
constexpr const char kExecuteUpdateApplyCheck[] = "ExecuteUpdateApplyCheck";
constexpr const char kRegisterUpdateModule[] = "RegisterUpdateModule";
constexpr const char kSetDependencyInfo[] = "SetDependencyInfo";
constexpr const char kExecuteUpdateRestore[] = "ExecuteUpdateRestore";
constexpr const char kExecutePreUpdate[] = "ExecutePreUpdate";
constexpr const char kExecuteUpdateBackup[] = "ExecuteUpdateBackup";
constexpr const char kExecuteUpdate[] = "ExecuteUpdate";
// VELMORA_LogManager
constexpr const char kCollectDownloadLog[] = "CollectDownloadLog";
constexpr const char kCollectResultLog[] = "CollectResultLog";
constexpr const char kCollectVersionUpLog[] = "CollectVersionUpLog";
// VELMORA_QelVersion
constexpr const char kCollectQelVersion[] = "CollectQelVersion";
// VELMORA_ToolServiceWD
constexpr const char kAliveUpdate[] = "AliveMonitorUpdateParameter";
constexpr const char kAliveClear[] = "AliveMonitorClearParameter";
constexpr const char kAliveSet[] = "AliveMonitorSetParameter";
constexpr const char kAliveGet[] = "AliveMonitorGetParameter";
}  // namespace method

// --- Items and parameters ---------------------------------------------------------------
// Whole item prefixes (type, name) that the library writes or scans for.
constexpr const char kReturnValueItem[] = "long;ReturnValue;";
constexpr const char kRebootItem[] = "long;Reboot;";
constexpr const char kAppKeyItem[] = "string;AppKey;";

namespace param {
constexpr const char kAppKey[] = "AppKey";
constexpr const char kRollback[] = "Rollback";
constexpr const char kName[] = "Name";    // alive-monitor parameter name
constexpr const char kValue[] = "Value";  // alive-monitor parameter value
constexpr const char kType[] = "Type";    // alive-monitor parameter type
constexpr const char kLines[] = "Lines";  // log lines of the log replies
}  // namespace param

// Header items of the list replies.
constexpr const char kQelVersionList[] = "QelVersionInfoList";
constexpr const char kUpdatePlansList[] = "UpdatePlansList";
constexpr const char kVersionUpdateLogList[] = "VersionUpdateLogList";
constexpr const char kConformityList[] = "UpdateModuleConformityList";
// Items whose values are passwords, masked in recordings and on screen.
using message_format::kCacheServerPassword;
using message_format::kProxyPassword;
using message_format::kSecretItems;

// The module list of a RegisterUpdateModule call.
constexpr const char kRegisteredModules[] = "UpdateModuleRegistInfo";
// The list a conformity check hands to the service.
constexpr const char kConformityInput[] = "CheckUpdateModuleConformityInput";

// --- Provider-management items ----------------------------------------------------------
// The item and list names of the provider texts (GetProviderManageInfo's reply
// and the records' own text); the conformity entries below reuse them.
namespace field {
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

}  // namespace field

// --- Conformity entries ------------------------------------------------------------------
// One entry of the conformity list as the service writes it: ProviderName,
// VendorName, UpdateModuleKind, then "ModuleInfo" with the module's strings
// (UniqueName, DispName, ModuleName, AttachInfo) and its blocks: AttrInfo
// (HardwareVersion, VendorVersion, ReqProviderVersion, Priority), LinkInfo
// (the three RebootAfter* strings, Recovery), FileInfo and DepoInfo with
// ShareInfo and SimuInfo. In a file list "Kind" opens a file and "Md5Hash"
// closes it; in a reference list "ProviderName" opens one and
// "UpperVendorVersion" closes it.
namespace conformity {
using namespace field;
constexpr const char kUpdateModuleKind[] = "UpdateModuleKind";
constexpr const char kDispName[] = "DispName";
constexpr const char kAttachInfo[] = "AttachInfo";
constexpr const char kAttrInfo[] = "AttrInfo";
constexpr const char kLinkInfo[] = "LinkInfo";
constexpr const char kFileInfo[] = "FileInfo";
constexpr const char kDepoInfo[] = "DepoInfo";
constexpr const char kShareInfo[] = "ShareInfo";
constexpr const char kSimuInfo[] = "SimuInfo";
constexpr const char kKind[] = "Kind";
constexpr const char kUrl[] = "Url";
constexpr const char kPhysiName[] = "PhysiName";
constexpr const char kMd5Hash[] = "Md5Hash";
}  // namespace conformity

// --- Paths (below the system root, see CFileUtility::SystemPath) -------------------------
constexpr const char kSocketConfig[] = "/opt/velmora/qel/som/socket.conf";
constexpr const char kMofFile[] = "/opt/velmora/qel/etc/qelvelmora.mof";
// Appended to CFileUtility::GetInstallPath(2).
constexpr const char kProcessStatusFile[] = "/ProcessStatus.ini";

// --- Process status ------------------------------------------------------------------------
// The file holds one section, "[icon]", with "status=" and "type=".
namespace status {
constexpr const char kSection[] = "icon";
constexpr const char kStatusKey[] = "status";
constexpr const char kTypeKey[] = "type";
constexpr const char kIdle[] = "idle";
constexpr const char kDownload[] = "download";
constexpr const char kUpdate[] = "update";      // a status starting with it: a run is applying
constexpr const char kRollback[] = "rollback";  // the type of a run that rolls back
// What GetQELStatus reports; 0 when nothing runs.
constexpr LONG kCodeIdle = 0;
constexpr LONG kCodeUpdate = 0x8001;
constexpr LONG kCodeRollback = 0x8002;
constexpr LONG kCodeDownload = 0x8003;
}  // namespace status

}  // namespace protocol
}  // namespace qel

#endif  // QEL_SRC_COMMON_PROTOCOL_H
