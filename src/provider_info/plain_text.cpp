#include "plain_text.h"

#include "IWbemClassObject.h"
#include "QelItemText.h"
#include "provider_fields.h"

namespace qel {
namespace pm {
namespace {

class PlainWriter {
  public:
    explicit PlainWriter(std::string& out) : out_(out) {}

    void Header(const char* name) {
        if (out_.size() != headersEnd_)
            headersFrom_ = out_.size();
        item::AppendItem(out_, item::kTagClassArray, name, "");
        headersEnd_ = out_.size();
    }

    // Drops the headers of empty lists that end the text. After such a
    // header nothing readable follows, and the record reader takes an
    // unreadable first field for a present one: it would add one empty
    // element. Without the header both readers find the list empty.
    void Finish() {
        if (headersEnd_ == out_.size())
            out_.resize(headersFrom_);
    }
    void String(const char* name, const std::string& value) { w_.SetString(out_, name, value); }

    void Provider(const char* header, const std::string& name, const std::string& vendor,
                  const std::string& version) {
        item::AppendItem(out_, item::kTagClass, header, "");
        String(kProviderName, name);
        String(kProviderVendorName, vendor);
        String(kProviderVersion, version);
    }

    template <class Owner>
    void Lists(const Owner& owner) {
        Header(kLinkAppInfo);
        for (const CVelmora_LinkApplicationInfo& app : owner.LinkAppInfo) {
            String(kApplicationName, app.ApplicationName);
            String(kExecutePath, app.ExecutePath);
            String(kDescriptionFilePath, app.DescriptionFilePath);
        }
        Header(kModuleInfo);
        for (const CVelmora_ManageModuleInfo& module : owner.ModuleInfo)
            Module(module);
    }

    void Device(const CVelmora_DeviceInfo& device) {
        String(kVendorName, device.VendorName);
        String(kUniqueName, device.UniqueName);
        String(kDeviceId, device.DeviceId);
        String(kHardwareVersion, device.HardwareVersion);
        w_.SetStringArray(out_, kExtendedInfo, device.ExtendedInfo);
        Lists(device);
    }

    void Tool(const CVelmora_ToolInfo& tool) {
        String(kVendorName, tool.VendorName);
        String(kUniqueName, tool.UniqueName);
        w_.SetStringArray(out_, kExtendedInfo, tool.ExtendedInfo);
        Lists(tool);
    }

  private:
    std::size_t headersFrom_ = std::string::npos;  // start of the last run of headers
    std::size_t headersEnd_ = std::string::npos;   // end of that run

    void Module(const CVelmora_ManageModuleInfo& module) {
        String(kModuleKind, module.ModuleKind);
        String(kModuleName, module.ModuleName);
        w_.SetInt(out_, kUpdatePriority, module.UpdatePriority);
        w_.SetInt(out_, kUpdateStatus, module.UpdateStatus);
        w_.SetInt(out_, kUpdateProgress, module.UpdateProgress);
        Header(kRepositoryInfo);
        for (const CVelmora_ManageRepositoryInfo& entry : module.RepositoryInfo)
            Repository(entry);
    }

    void Repository(const CVelmora_ManageRepositoryInfo& e) {
        String(kApplyKind, e.ApplyKind);
        String(kHardwareVersion, e.HardwareVersion);
        String(kVendorVersion, e.VendorVersion);
        String(kDisplayName, e.DisplayName);
        String(kModulePath, e.ModulePath);
        w_.SetInt(out_, kPriority, e.Priority);
        String(kReqProviderVersion, e.ReqProviderVersion);
        String(kRebootAfterPreUpdate, e.RebootAfterPreUpdate);
        String(kRebootAfterUpdate, e.RebootAfterUpdate);
        String(kRebootAfterRestore, e.RebootAfterRestore);
        w_.SetBool(out_, kRecovery, e.Recovery);
        w_.SetStringArray(out_, kModuleFileName, e.ModuleFileName);
        w_.SetStringArray(out_, kManualFileName, e.ManualFileName);
        w_.SetStringArray(out_, kReleasenotesFileName, e.ReleasenotesFileName);
        Dependencies(kDependencyInfoSelf, e.DependencyInfoSelf);
        Dependencies(kDependencyInfoOther, e.DependencyInfoOther);
    }

    void Dependencies(const char* listName, const std::vector<CVelmora_DependencyInfo>& deps) {
        Header(listName);
        for (const CVelmora_DependencyInfo& d : deps) {
            String(kProviderName, d.ProviderName);
            String(kVendorName, d.VendorName);
            String(kUniqueName, d.UniqueName);
            String(kModuleKind, d.ModuleKind);
            String(kModuleName, d.ModuleName);
            String(kVendorVersion, d.VendorVersion);
            String(kUpperVendorVersion, d.UpperVendorVersion);
        }
    }

    std::string& out_;
    IWbemClassObject w_;  // receiver of the item writers
};

}  // namespace

void WritePlainText(const CVelmora_DevProviderManageInfo& info, std::string& out) {
    PlainWriter writer(out);
    writer.Provider(kDevProvider, info.ProviderName, info.ProviderVendorName, info.ProviderVersion);
    for (const CVelmora_DeviceInfo& device : info.DeviceInfo) {
        writer.Header(kDeviceInfo);
        writer.Device(device);
    }
    writer.Finish();
}

void WritePlainText(const CVelmora_ToolProviderManageInfo& info, std::string& out) {
    PlainWriter writer(out);
    writer.Provider(kToolProvider, info.ProviderName, info.ProviderVendorName,
                    info.ProviderVersion);
    for (const CVelmora_ToolInfo& tool : info.ToolInfo) {
        writer.Header(kToolInfo);
        writer.Tool(tool);
    }
    writer.Finish();
}

}  // namespace pm
}  // namespace qel
