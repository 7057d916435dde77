// The field order of the plain-name layout (see plain_text.h), written once:
// the writer and the positional record reader both walk these lists.
//
// VisitPlainFields(PlainRecord<R>(), v) calls one hook of `v` per field of
// an R, in the order in which the fields follow each other in the text:
//
//   v.String(name, &R::field)          a std::string
//   v.Int(name, &R::field)             an int
//   v.Bool(name, &R::field)            a bool
//   v.Array(name, &R::field)           a std::vector<std::string>
//   v.List(name, &R::field, header)    a std::vector of nested records, each
//                                      element laid out by its own list here
//
// Names are the k... constants, handed on as arrays so that readers forced
// inline see their lengths at compile time. Fields are given as member
// pointers, not as a record's members: the record reader needs an element's
// first field before the element exists, since its absence ends the list.
// Every element starts with a string field.
//
// These are not the records' own field lists (common/record_fields.h),
// which take a record instead: here a device carries no DeviceName or
// DeviceVendorName, and a repository entry has its VendorVersion before its
// DisplayName.
#ifndef QEL_SRC_PROVIDER_INFO_PLAIN_LAYOUT_H
#define QEL_SRC_PROVIDER_INFO_PLAIN_LAYOUT_H

#include "ProviderManageRecords.h"
#include "codec/item_view.h"
#include "provider_fields.h"

namespace qel {
namespace pm {

// Selects the field list of a record type.
template <class Record>
struct PlainRecord {};

// How a list is announced in the text: by one header item before all of its
// elements, or by one before every element (the provider's devices and
// tools).
enum class ListHeader { kOnce, kEveryElement };

template <class Visitor>
QEL_INLINE_READER void VisitPlainFields(PlainRecord<CVelmora_DependencyInfo>, Visitor& v) {
    using R = CVelmora_DependencyInfo;
    v.String(kProviderName, &R::ProviderName);
    v.String(kVendorName, &R::VendorName);
    v.String(kUniqueName, &R::UniqueName);
    v.String(kModuleKind, &R::ModuleKind);
    v.String(kModuleName, &R::ModuleName);
    v.String(kVendorVersion, &R::VendorVersion);
    v.String(kUpperVendorVersion, &R::UpperVendorVersion);
}

template <class Visitor>
QEL_INLINE_READER void VisitPlainFields(PlainRecord<CVelmora_ManageRepositoryInfo>, Visitor& v) {
    using R = CVelmora_ManageRepositoryInfo;
    v.String(kApplyKind, &R::ApplyKind);
    v.String(kHardwareVersion, &R::HardwareVersion);
    v.String(kVendorVersion, &R::VendorVersion);
    v.String(kDisplayName, &R::DisplayName);
    v.String(kModulePath, &R::ModulePath);
    v.Int(kPriority, &R::Priority);
    v.String(kReqProviderVersion, &R::ReqProviderVersion);
    v.String(kRebootAfterPreUpdate, &R::RebootAfterPreUpdate);
    v.String(kRebootAfterUpdate, &R::RebootAfterUpdate);
    v.String(kRebootAfterRestore, &R::RebootAfterRestore);
    v.Bool(kRecovery, &R::Recovery);
    v.Array(kModuleFileName, &R::ModuleFileName);
    v.Array(kManualFileName, &R::ManualFileName);
    v.Array(kReleasenotesFileName, &R::ReleasenotesFileName);
    v.List(kDependencyInfoSelf, &R::DependencyInfoSelf, ListHeader::kOnce);
    v.List(kDependencyInfoOther, &R::DependencyInfoOther, ListHeader::kOnce);
}

template <class Visitor>
QEL_INLINE_READER void VisitPlainFields(PlainRecord<CVelmora_ManageModuleInfo>, Visitor& v) {
    using R = CVelmora_ManageModuleInfo;
    v.String(kModuleKind, &R::ModuleKind);
    v.String(kModuleName, &R::ModuleName);
    v.Int(kUpdatePriority, &R::UpdatePriority);
    v.Int(kUpdateStatus, &R::UpdateStatus);
    v.Int(kUpdateProgress, &R::UpdateProgress);
    v.List(kRepositoryInfo, &R::RepositoryInfo, ListHeader::kOnce);
}

template <class Visitor>
QEL_INLINE_READER void VisitPlainFields(PlainRecord<CVelmora_LinkApplicationInfo>, Visitor& v) {
    using R = CVelmora_LinkApplicationInfo;
    v.String(kApplicationName, &R::ApplicationName);
    v.String(kExecutePath, &R::ExecutePath);
    v.String(kDescriptionFilePath, &R::DescriptionFilePath);
}

// The lists that end a device and a tool alike.
template <class Owner, class Visitor>
QEL_INLINE_READER void VisitPlainOwnerLists(Visitor& v) {
    v.List(kLinkAppInfo, &Owner::LinkAppInfo, ListHeader::kOnce);
    v.List(kModuleInfo, &Owner::ModuleInfo, ListHeader::kOnce);
}

template <class Visitor>
QEL_INLINE_READER void VisitPlainFields(PlainRecord<CVelmora_DeviceInfo>, Visitor& v) {
    using R = CVelmora_DeviceInfo;
    v.String(kVendorName, &R::VendorName);
    v.String(kUniqueName, &R::UniqueName);
    v.String(kDeviceId, &R::DeviceId);
    v.String(kHardwareVersion, &R::HardwareVersion);
    v.Array(kExtendedInfo, &R::ExtendedInfo);
    VisitPlainOwnerLists<R>(v);
}

template <class Visitor>
QEL_INLINE_READER void VisitPlainFields(PlainRecord<CVelmora_ToolInfo>, Visitor& v) {
    using R = CVelmora_ToolInfo;
    v.String(kVendorName, &R::VendorName);
    v.String(kUniqueName, &R::UniqueName);
    v.Array(kExtendedInfo, &R::ExtendedInfo);
    VisitPlainOwnerLists<R>(v);
}

// The provider's own fields, after its header item (kDevProvider or
// kToolProvider, which names the whole text rather than a field).
template <class Provider, class Visitor>
QEL_INLINE_READER void VisitPlainProviderFields(Visitor& v) {
    v.String(kProviderName, &Provider::ProviderName);
    v.String(kProviderVendorName, &Provider::ProviderVendorName);
    v.String(kProviderVersion, &Provider::ProviderVersion);
}

template <class Visitor>
QEL_INLINE_READER void VisitPlainFields(PlainRecord<CVelmora_DevProviderManageInfo>, Visitor& v) {
    using R = CVelmora_DevProviderManageInfo;
    VisitPlainProviderFields<R>(v);
    v.List(kDeviceInfo, &R::DeviceInfo, ListHeader::kEveryElement);
}

template <class Visitor>
QEL_INLINE_READER void VisitPlainFields(PlainRecord<CVelmora_ToolProviderManageInfo>, Visitor& v) {
    using R = CVelmora_ToolProviderManageInfo;
    VisitPlainProviderFields<R>(v);
    v.List(kToolInfo, &R::ToolInfo, ListHeader::kEveryElement);
}

}  // namespace pm
}  // namespace qel

#endif  // QEL_SRC_PROVIDER_INFO_PLAIN_LAYOUT_H
