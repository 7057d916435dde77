// The field lists of the typed records, in wire order.
//
// Each VisitFields names every field of a record with its item name and
// hands it to a visitor (String, Int, UInt, Bool). Writers and readers share
// these lists, so a record's wire layout is written down once.
//
// The provider-management records have list-valued fields too: for those the
// visitor's List(name, vector) hook is called, with strings or records as the
// elements; the visitors of the flat records never see it.
#ifndef QEL_SRC_COMMON_RECORD_FIELDS_H
#define QEL_SRC_COMMON_RECORD_FIELDS_H

#include <type_traits>

#include "ProviderManageRecords.h"
#include "ScheduleRecords.h"
#include "VersionListRecords.h"
#include "protocol.h"

namespace qel {

// R is the record type, possibly const.
template <class R, class V>
typename std::enable_if<
    std::is_same<typename std::remove_const<R>::type, CVELMORA_DownloadSetting>::value>::type
VisitFields(R& r, V& v) {
    v.Int("DownloadType", r.DownloadType);
    v.String("WebSiteUrl", r.WebSiteUrl);
    v.String("ProxyAddress", r.ProxyAddress);
    v.String("ProxyPort", r.ProxyPort);
    v.String("ProxyUser", r.ProxyUser);
    v.String(protocol::kProxyPassword, r.ProxyPassword);
    v.String("CacheServerPath", r.CacheServerPath);
    v.String("CacheServerUser", r.CacheServerUser);
    v.String(protocol::kCacheServerPassword, r.CacheServerPassword);
    v.String("TempDriveLetter", r.TempDriveLetter);
    v.String("ExternalMediaPath", r.ExternalMediaPath);
}

// The download and the update schedule share their five fields.
template <class R, class V>
typename std::enable_if<
    std::is_same<typename std::remove_const<R>::type, CVELMORA_DownloadSchedule>::value ||
    std::is_same<typename std::remove_const<R>::type, CVELMORA_UpdateSchedule>::value>::type
VisitFields(R& r, V& v) {
    v.Bool("IsAutoSetting", r.IsAutoSetting);
    v.Int("RepeatType", r.RepeatType);
    v.String("DayOfWeek", r.DayOfWeek);
    v.String("Date", r.Date);
    v.String("Time", r.Time);
}

template <class R, class V>
typename std::enable_if<
    std::is_same<typename std::remove_const<R>::type, CVelmora_PriorityUpdateParam>::value>::type
VisitFields(R& r, V& v) {
    v.String("AppKey", r.AppKey);
    v.UInt("UpdatePriority", r.UpdatePriority);
    v.String("VendorName", r.VendorName);
    v.String("DeviceID", r.DeviceID);
    v.String("ModuleKind", r.ModuleKind);
}

template <class R, class V>
typename std::enable_if<
    std::is_same<typename std::remove_const<R>::type, CVELMORA_QelVersionInfo>::value>::type
VisitFields(R& r, V& v) {
    v.String("GroupName", r.GroupName);
    v.String("FileName", r.FileName);
    v.String("FileVersion", r.FileVersion);
}

template <class R, class V>
typename std::enable_if<
    std::is_same<typename std::remove_const<R>::type, CVELMORA_UpdatePlans>::value>::type
VisitFields(R& r, V& v) {
    v.String("ProviderName", r.ProviderName);
    v.String("VendorName", r.VendorName);
    v.String("UniqueName", r.UniqueName);
    v.String("DeviceId", r.DeviceId);
    v.String("ModuleKind", r.ModuleKind);
    v.Int("UpdatePriority", r.UpdatePriority);
    v.String("CurrentVendorVersion", r.CurrentVendorVersion);
    v.String("NextVendorVersion", r.NextVendorVersion);
    v.String("DisplayName", r.DisplayName);
    v.Int("UpdateJudgment", r.UpdateJudgment);
    v.String("DependencyName", r.DependencyName);
}

template <class R, class V>
typename std::enable_if<
    std::is_same<typename std::remove_const<R>::type, CVELMORA_VersionUpdateLog>::value>::type
VisitFields(R& r, V& v) {
    v.String("ProviderName", r.ProviderName);
    v.String("DateTime", r.DateTime);
    v.String("VendorName", r.VendorName);
    v.String("UniqueName", r.UniqueName);
    v.String("ModuleKind", r.ModuleKind);
    v.String("BeforeVersion", r.BeforeVersion);
    v.String("AfterVersion", r.AfterVersion);
}

// The provider-management records, outermost last. Reserved is carried in
// memory only: no codec writes or reads it.
template <class R, class V>
typename std::enable_if<
    std::is_same<typename std::remove_const<R>::type, CVelmora_DependencyInfo>::value>::type
VisitFields(R& r, V& v) {
    v.String("ProviderName", r.ProviderName);
    v.String("VendorName", r.VendorName);
    v.String("UniqueName", r.UniqueName);
    v.String("ModuleKind", r.ModuleKind);
    v.String("ModuleName", r.ModuleName);
    v.String("VendorVersion", r.VendorVersion);
    v.String("UpperVendorVersion", r.UpperVendorVersion);
}

template <class R, class V>
typename std::enable_if<
    std::is_same<typename std::remove_const<R>::type, CVelmora_ManageRepositoryInfo>::value>::type
VisitFields(R& r, V& v) {
    v.String("ApplyKind", r.ApplyKind);
    v.String("HardwareVersion", r.HardwareVersion);
    v.String("DisplayName", r.DisplayName);
    v.String("VendorVersion", r.VendorVersion);
    v.String("ModulePath", r.ModulePath);
    v.Int("Priority", r.Priority);
    v.String("ReqProviderVersion", r.ReqProviderVersion);
    v.String("RebootAfterPreUpdate", r.RebootAfterPreUpdate);
    v.String("RebootAfterUpdate", r.RebootAfterUpdate);
    v.String("RebootAfterRestore", r.RebootAfterRestore);
    v.Bool("Recovery", r.Recovery);
    v.List("ModuleFileName", r.ModuleFileName);
    v.List("ManualFileName", r.ManualFileName);
    v.List("ReleasenotesFileName", r.ReleasenotesFileName);
    v.List("DependencyInfoSelf", r.DependencyInfoSelf);
    v.List("DependencyInfoOther", r.DependencyInfoOther);
}

template <class R, class V>
typename std::enable_if<
    std::is_same<typename std::remove_const<R>::type, CVelmora_ManageModuleInfo>::value>::type
VisitFields(R& r, V& v) {
    v.String("ModuleKind", r.ModuleKind);
    v.String("ModuleName", r.ModuleName);
    v.Int("UpdatePriority", r.UpdatePriority);
    v.Int("UpdateStatus", r.UpdateStatus);
    v.Int("UpdateProgress", r.UpdateProgress);
    v.List("RepositoryInfo", r.RepositoryInfo);
}

template <class R, class V>
typename std::enable_if<
    std::is_same<typename std::remove_const<R>::type, CVelmora_LinkApplicationInfo>::value>::type
VisitFields(R& r, V& v) {
    v.String("ApplicationName", r.ApplicationName);
    v.String("ExecutePath", r.ExecutePath);
    v.String("DescriptionFilePath", r.DescriptionFilePath);
}

// The tool and the device share everything but the device's own five fields.
template <class R, class V>
void VisitSharedHardwareFields(R& r, V& v) {
    v.List("ExtendedInfo", r.ExtendedInfo);
    v.List("LinkAppInfo", r.LinkAppInfo);
    v.List("ModuleInfo", r.ModuleInfo);
}

template <class R, class V>
typename std::enable_if<
    std::is_same<typename std::remove_const<R>::type, CVelmora_DeviceInfo>::value>::type
VisitFields(R& r, V& v) {
    v.String("VendorName", r.VendorName);
    v.String("UniqueName", r.UniqueName);
    v.String("DeviceId", r.DeviceId);
    v.String("DeviceName", r.DeviceName);
    v.String("DeviceVendorName", r.DeviceVendorName);
    v.String("HardwareVersion", r.HardwareVersion);
    VisitSharedHardwareFields(r, v);
}

template <class R, class V>
typename std::enable_if<
    std::is_same<typename std::remove_const<R>::type, CVelmora_ToolInfo>::value>::type
VisitFields(R& r, V& v) {
    v.String("VendorName", r.VendorName);
    v.String("UniqueName", r.UniqueName);
    VisitSharedHardwareFields(r, v);
}

template <class R, class V>
typename std::enable_if<
    std::is_same<typename std::remove_const<R>::type, CVelmora_DevProviderManageInfo>::value>::type
VisitFields(R& r, V& v) {
    v.String("ProviderName", r.ProviderName);
    v.String("ProviderVendorName", r.ProviderVendorName);
    v.String("ProviderVersion", r.ProviderVersion);
    v.List("DeviceInfo", r.DeviceInfo);
}

template <class R, class V>
typename std::enable_if<
    std::is_same<typename std::remove_const<R>::type, CVelmora_ToolProviderManageInfo>::value>::type
VisitFields(R& r, V& v) {
    v.String("ProviderName", r.ProviderName);
    v.String("ProviderVendorName", r.ProviderVendorName);
    v.String("ProviderVersion", r.ProviderVersion);
    v.List("ToolInfo", r.ToolInfo);
}

// Section names of the settings records.
inline const char* SectionName(const CVELMORA_DownloadSetting&) {
    return "DownloadSetting";
}
inline const char* SectionName(const CVELMORA_DownloadSchedule&) {
    return "DownloadSchedule";
}
inline const char* SectionName(const CVELMORA_UpdateSchedule&) {
    return "UpdateSchedule";
}
inline const char* SectionName(const CVelmora_PriorityUpdateParam&) {
    return "Velmora_PriorityUpdateParam";
}

// Header item names of the list bodies (named in protocol.h).
inline const char* ListHeader(const CVELMORA_QelVersionInfo&) {
    return protocol::kQelVersionList;
}
inline const char* ListHeader(const CVELMORA_UpdatePlans&) {
    return protocol::kUpdatePlansList;
}
inline const char* ListHeader(const CVELMORA_VersionUpdateLog&) {
    return protocol::kVersionUpdateLogList;
}

}  // namespace qel

#endif  // QEL_SRC_COMMON_RECORD_FIELDS_H
