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
    m_writeTarget.SetString(text, kProviderName, info.ProviderName);
    m_writeTarget.SetString(text, kProviderVendorName, info.ProviderVendorName);
    m_writeTarget.SetString(text, kProviderVersion, info.ProviderVersion);
    for (std::size_t i = 0; i < info.DeviceInfo.size(); ++i) {
        getDeviceInfo(info.DeviceInfo[i], static_cast<int>(i), text);
    }
}

void CProviderManageInfo::toString(const CVelmora_ToolProviderManageInfo& info, std::string& text) {
    m_writeTarget.SetString(text, kProviderName, info.ProviderName);
    m_writeTarget.SetString(text, kProviderVendorName, info.ProviderVendorName);
    m_writeTarget.SetString(text, kProviderVersion, info.ProviderVersion);
    for (std::size_t i = 0; i < info.ToolInfo.size(); ++i) {
        getToolInfo(info.ToolInfo[i], static_cast<int>(i), text);
    }
}

void CProviderManageInfo::getDeviceInfo(const CVelmora_DeviceInfo& device, int index,
                                        std::string& text) {
    const std::string p = getClassArrayName(kDeviceInfo, index);
    m_writeTarget.SetString(text, p, kVendorName, device.VendorName);
    m_writeTarget.SetString(text, p, kUniqueName, device.UniqueName);
    m_writeTarget.SetString(text, p, kDeviceId, device.DeviceId);
    m_writeTarget.SetString(text, p, kDeviceName, device.DeviceName);
    m_writeTarget.SetString(text, p, kDeviceVendorName, device.DeviceVendorName);
    m_writeTarget.SetString(text, p, kHardwareVersion, device.HardwareVersion);
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
    m_writeTarget.SetString(text, p, kVendorName, tool.VendorName);
    m_writeTarget.SetString(text, p, kUniqueName, tool.UniqueName);
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
    m_writeTarget.SetString(text, p, kApplicationName, app.ApplicationName);
    m_writeTarget.SetString(text, p, kExecutePath, app.ExecutePath);
    m_writeTarget.SetString(text, p, kDescriptionFilePath, app.DescriptionFilePath);
}

void CProviderManageInfo::getModuleInfo(const CVelmora_ManageModuleInfo& module, int index,
                                        std::string& text) {
    const std::string p = getClassArrayName(kModuleInfo, index);
    m_writeTarget.SetString(text, p, kModuleKind, module.ModuleKind);
    m_writeTarget.SetInt(text, p, kUpdatePriority, module.UpdatePriority);
    m_writeTarget.SetInt(text, p, kUpdateStatus, module.UpdateStatus);
    m_writeTarget.SetInt(text, p, kUpdateProgress, module.UpdateProgress);
    AppendListHeader(text, kRepositoryListTag, p, kRepositoryInfo);
    for (std::size_t k = 0; k < module.RepositoryInfo.size(); ++k) {
        getRepositoryInfo(module.RepositoryInfo[k], static_cast<int>(k), text);
    }
}

void CProviderManageInfo::getRepositoryInfo(const CVelmora_ManageRepositoryInfo& entry, int index,
                                            std::string& text) {
    const std::string p = getClassArrayName(kRepositoryInfo, index);
    m_writeTarget.SetString(text, p, kApplyKind, entry.ApplyKind);
    m_writeTarget.SetString(text, p, kHardwareVersion, entry.HardwareVersion);
    m_writeTarget.SetString(text, p, kDisplayName, entry.DisplayName);
    m_writeTarget.SetString(text, p, kVendorVersion, entry.VendorVersion);
    m_writeTarget.SetString(text, p, kModulePath, entry.ModulePath);
    m_writeTarget.SetInt(text, p, kPriority, entry.Priority);
    m_writeTarget.SetString(text, p, kReqProviderVersion, entry.ReqProviderVersion);
    m_writeTarget.SetString(text, p, kRebootAfterPreUpdate, entry.RebootAfterPreUpdate);
    m_writeTarget.SetString(text, p, kRebootAfterUpdate, entry.RebootAfterUpdate);
    m_writeTarget.SetString(text, p, kRebootAfterRestore, entry.RebootAfterRestore);
    m_writeTarget.SetBool(text, p, kRecovery, entry.Recovery);
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
    m_writeTarget.SetString(text, p, kProviderName, dep.ProviderName);
    m_writeTarget.SetString(text, p, kVendorName, dep.VendorName);
    m_writeTarget.SetString(text, p, kUniqueName, dep.UniqueName);
    m_writeTarget.SetString(text, p, kModuleKind, dep.ModuleKind);
    m_writeTarget.SetString(text, p, kVendorVersion, dep.VendorVersion);
    m_writeTarget.SetString(text, p, kUpperVendorVersion, dep.UpperVendorVersion);
}
