// CProviderManageInfo: provider-management records to path-named item text.
#include "CProviderManageInfo.h"
#include "QelItemText.h"
#include "provider_fields.h"

namespace {

using namespace qel::pm;

// "string[];" prefix name ";" then each element and "!#"; the last "!#" then
// becomes ";#", so the item ends in ";#" and the "#" leads into the next
// item's type field. An empty list has no separator to turn: it is written
// as the header followed by ";#", which reads back as an empty value.
void AppendStringArray(std::string& text, const std::string& prefix, const char* name,
                       const std::vector<std::string>& values) {
    using qel::item::kFieldEnd;
    text.append(qel::item::kTagStringArray).push_back(kFieldEnd);
    text.append(prefix).append(name).push_back(kFieldEnd);
    if (values.empty()) {
        text.push_back(kFieldEnd);
        text.push_back('#');
        return;
    }
    for (const std::string& value : values) {
        text.append(value).append(qel::item::kArraySeparator);
    }
    text[text.size() - qel::item::kArraySeparatorLength] = kFieldEnd;
}

// A list header: tag ";" prefix name ";" ";" (empty value).
void AppendListHeader(std::string& text, const char* tag, const std::string& prefix,
                      const char* name) {
    qel::item::AppendItem(text, tag, prefix + name, std::string());
}

}  // namespace

void CProviderManageInfo::toString(const CVelmora_DevProviderManageInfo& info, std::string& text) {
    qel::item::AppendStringItem(text, kProviderName, info.ProviderName);
    qel::item::AppendStringItem(text, kProviderVendorName, info.ProviderVendorName);
    qel::item::AppendStringItem(text, kProviderVersion, info.ProviderVersion);
    for (std::size_t i = 0; i < info.DeviceInfo.size(); ++i) {
        getDeviceInfo(info.DeviceInfo[i], static_cast<int>(i), text);
    }
}

void CProviderManageInfo::toString(const CVelmora_ToolProviderManageInfo& info, std::string& text) {
    qel::item::AppendStringItem(text, kProviderName, info.ProviderName);
    qel::item::AppendStringItem(text, kProviderVendorName, info.ProviderVendorName);
    qel::item::AppendStringItem(text, kProviderVersion, info.ProviderVersion);
    for (std::size_t i = 0; i < info.ToolInfo.size(); ++i) {
        getToolInfo(info.ToolInfo[i], static_cast<int>(i), text);
    }
}

void CProviderManageInfo::getDeviceInfo(const CVelmora_DeviceInfo& device, int index,
                                        std::string& text) {
    const std::string p = getClassArrayName(kDeviceInfo, index);
    qel::item::AppendStringItem(text, p, kVendorName, device.VendorName);
    qel::item::AppendStringItem(text, p, kUniqueName, device.UniqueName);
    qel::item::AppendStringItem(text, p, kDeviceId, device.DeviceId);
    qel::item::AppendStringItem(text, p, kDeviceName, device.DeviceName);
    qel::item::AppendStringItem(text, p, kDeviceVendorName, device.DeviceVendorName);
    qel::item::AppendStringItem(text, p, kHardwareVersion, device.HardwareVersion);
    AppendStringArray(text, p, kExtendedInfo, device.ExtendedInfo);
    AppendListHeader(text, kLinkAppListTag, p, kLinkAppInfo);
    for (std::size_t j = 0; j < device.LinkAppInfo.size(); ++j) {
        getLinkAppInfo(device.LinkAppInfo[j], static_cast<int>(j), text);
    }
    AppendListHeader(text, kModuleListTag, p, kModuleInfo);
    for (std::size_t j = 0; j < device.ModuleInfo.size(); ++j) {
        getModuleInfo(device.ModuleInfo[j], static_cast<int>(j), text);
    }
}

void CProviderManageInfo::getToolInfo(const CVelmora_ToolInfo& tool, int index, std::string& text) {
    const std::string p = getClassArrayName(kToolInfo, index);
    qel::item::AppendStringItem(text, p, kVendorName, tool.VendorName);
    qel::item::AppendStringItem(text, p, kUniqueName, tool.UniqueName);
    AppendStringArray(text, p, kExtendedInfo, tool.ExtendedInfo);
    AppendListHeader(text, kLinkAppListTag, p, kLinkAppInfo);
    for (std::size_t j = 0; j < tool.LinkAppInfo.size(); ++j) {
        getLinkAppInfo(tool.LinkAppInfo[j], static_cast<int>(j), text);
    }
    AppendListHeader(text, kModuleListTag, p, kModuleInfo);
    for (std::size_t j = 0; j < tool.ModuleInfo.size(); ++j) {
        getModuleInfo(tool.ModuleInfo[j], static_cast<int>(j), text);
    }
}

void CProviderManageInfo::getLinkAppInfo(const CVelmora_LinkApplicationInfo& app, int index,
                                         std::string& text) {
    const std::string p = getClassArrayName(kLinkAppInfo, index);
    qel::item::AppendStringItem(text, p, kApplicationName, app.ApplicationName);
    qel::item::AppendStringItem(text, p, kExecutePath, app.ExecutePath);
    qel::item::AppendStringItem(text, p, kDescriptionFilePath, app.DescriptionFilePath);
}

void CProviderManageInfo::getModuleInfo(const CVelmora_ManageModuleInfo& module, int index,
                                        std::string& text) {
    const std::string p = getClassArrayName(kModuleInfo, index);
    qel::item::AppendStringItem(text, p, kModuleKind, module.ModuleKind);
    qel::item::AppendIntItem(text, p + kUpdatePriority, module.UpdatePriority);
    qel::item::AppendIntItem(text, p + kUpdateStatus, module.UpdateStatus);
    qel::item::AppendIntItem(text, p + kUpdateProgress, module.UpdateProgress);
    AppendListHeader(text, kRepositoryListTag, p, kRepositoryInfo);
    for (std::size_t k = 0; k < module.RepositoryInfo.size(); ++k) {
        getRepositoryInfo(module.RepositoryInfo[k], static_cast<int>(k), text);
    }
}

void CProviderManageInfo::getRepositoryInfo(const CVelmora_ManageRepositoryInfo& entry, int index,
                                            std::string& text) {
    const std::string p = getClassArrayName(kRepositoryInfo, index);
    qel::item::AppendStringItem(text, p, kApplyKind, entry.ApplyKind);
    qel::item::AppendStringItem(text, p, kHardwareVersion, entry.HardwareVersion);
    qel::item::AppendStringItem(text, p, kDisplayName, entry.DisplayName);
    qel::item::AppendStringItem(text, p, kVendorVersion, entry.VendorVersion);
    qel::item::AppendStringItem(text, p, kModulePath, entry.ModulePath);
    qel::item::AppendIntItem(text, p + kPriority, entry.Priority);
    qel::item::AppendStringItem(text, p, kReqProviderVersion, entry.ReqProviderVersion);
    qel::item::AppendStringItem(text, p, kRebootAfterPreUpdate, entry.RebootAfterPreUpdate);
    qel::item::AppendStringItem(text, p, kRebootAfterUpdate, entry.RebootAfterUpdate);
    qel::item::AppendStringItem(text, p, kRebootAfterRestore, entry.RebootAfterRestore);
    qel::item::AppendBoolItem(text, p + kRecovery, entry.Recovery);
    AppendStringArray(text, p, kModuleFileName, entry.ModuleFileName);
    AppendStringArray(text, p, kManualFileName, entry.ManualFileName);
    AppendStringArray(text, p, kReleasenotesFileName, entry.ReleasenotesFileName);
    AppendListHeader(text, kDependencyListTag, p, kDependencyInfoSelf);
    for (std::size_t m = 0; m < entry.DependencyInfoSelf.size(); ++m) {
        getDependencyInfo(entry.DependencyInfoSelf[m], kDependencyInfoSelf, static_cast<int>(m),
                          text);
    }
    AppendListHeader(text, kDependencyListTag, p, kDependencyInfoOther);
    for (std::size_t m = 0; m < entry.DependencyInfoOther.size(); ++m) {
        getDependencyInfo(entry.DependencyInfoOther[m], kDependencyInfoOther, static_cast<int>(m),
                          text);
    }
}

void CProviderManageInfo::getDependencyInfo(const CVelmora_DependencyInfo& dep,
                                            const char* listName, int index, std::string& text) {
    const std::string p = getClassArrayName(listName, index);
    qel::item::AppendStringItem(text, p, kProviderName, dep.ProviderName);
    qel::item::AppendStringItem(text, p, kVendorName, dep.VendorName);
    qel::item::AppendStringItem(text, p, kUniqueName, dep.UniqueName);
    qel::item::AppendStringItem(text, p, kModuleKind, dep.ModuleKind);
    qel::item::AppendStringItem(text, p, kVendorVersion, dep.VendorVersion);
    qel::item::AppendStringItem(text, p, kUpperVendorVersion, dep.UpperVendorVersion);
}
