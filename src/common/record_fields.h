// The field lists of the typed records, in wire order.
//
// Each VisitFields names every field of a record with its item name and
// hands it to a visitor (String, Int, UInt, Bool). Writers and readers share
// these lists, so a record's wire layout is written down once.
#ifndef QEL_SRC_COMMON_RECORD_FIELDS_H
#define QEL_SRC_COMMON_RECORD_FIELDS_H

#include <type_traits>

#include "ScheduleRecords.h"
#include "VersionListRecords.h"

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
    v.String("ProxyPassword", r.ProxyPassword);
    v.String("CacheServerPath", r.CacheServerPath);
    v.String("CacheServerUser", r.CacheServerUser);
    v.String("CacheServerPassword", r.CacheServerPassword);
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

// Header item names of the list bodies.
inline const char* ListHeader(const CVELMORA_QelVersionInfo&) {
    return "QelVersionInfoList";
}
inline const char* ListHeader(const CVELMORA_UpdatePlans&) {
    return "UpdatePlansList";
}
inline const char* ListHeader(const CVELMORA_VersionUpdateLog&) {
    return "VersionUpdateLogList";
}

}  // namespace qel

#endif  // QEL_SRC_COMMON_RECORD_FIELDS_H
