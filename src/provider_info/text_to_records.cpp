// CProviderManageInfo: the positional readers of reply text into records.
#include "CProviderManageInfo.h"
#include "codec/item_view.h"
#include "common/trace.h"
#include "provider_fields.h"
#include "provider_signatures.h"

namespace {

using namespace qel::pm;

// Reads the fields of one list element at a cursor; a field that is not the
// item at the cursor is skipped without moving on.
class ElementCursor {
  public:
    explicit ElementCursor(char* pos) : pos_(pos) {}
    QEL_INLINE_READER ElementCursor& String(const char* name, std::string& value) {
        pos_ = qel::ReadItem(pos_, name, value);
        return *this;
    }
    QEL_INLINE_READER ElementCursor& Int(const char* name, int& value) {
        pos_ = qel::ReadItem(pos_, name, value);
        return *this;
    }
    QEL_INLINE_READER ElementCursor& Bool(const char* name, bool& value) {
        pos_ = qel::ReadItem(pos_, name, value);
        return *this;
    }
    QEL_INLINE_READER ElementCursor& Array(const char* name, std::vector<std::string>& values) {
        pos_ = qel::ReadItem(pos_, name, values);
        return *this;
    }
    char* pos() const { return pos_; }
    void set(char* pos) { pos_ = pos; }

  private:
    char* pos_;
};

// Hooks around each element; the device form of the linked-application
// reader traces them.
// The per-element traces that the device form of the linked-application
// reader writes; no source, no trace.
struct ElementTrace {
    const std::string* source = nullptr;
    void Begin() const {
        if (source != nullptr)
            qel::TraceMessageLine(*source, qel::kLevelDetail, qel::sig::kLinkAppElementEnter);
    }
    void Appended() const {
        if (source != nullptr)
            qel::TraceMessageLine(*source, qel::kLevelDetail, qel::sig::kLinkAppElementLeave);
    }
};

// The shape of every list: for element i an optional header named after
// the list, then the first field, whose absence ends the list, then the rest.
template <class Record, class ReadRest>
char* ReadList(char* pos, const char* listName, const char* firstField, std::string Record::*first,
               std::vector<Record>& list, ReadRest readRest,
               const ElementTrace& trace = ElementTrace()) {
    for (;;) {
        trace.Begin();
        // An element's keys are matched by their last path component, so
        // the path "List[i]/" itself is never built.
        char* atElement = qel::CompareOne(
            pos, listName, [](const qel::ItemView&) {}, [] {});
        // The record is made in its place in the list once its first field
        // is known to be there (an unreadable one counts as there, and an
        // unclosed one leaves it empty): no record is built to be moved.
        const std::size_t count = list.size();
        char* next = qel::CompareOne(
            atElement, firstField,
            [&](const qel::ItemView& item) { item.AssignValue(list.emplace_back().*first); },
            [] {});
        if (next == atElement)
            return atElement;
        if (list.size() == count)
            list.emplace_back();
        ElementCursor cursor(next);
        readRest(cursor, list.back());
        trace.Appended();
        pos = cursor.pos();
    }
}

template <class Owner>
char* ReadLinkApps(char* pos, Owner& owner, bool traced, const std::string& traceName) {
    auto rest = [](ElementCursor& c, CVelmora_LinkApplicationInfo& app) {
        c.String(kExecutePath, app.ExecutePath)
            .String(kDescriptionFilePath, app.DescriptionFilePath);
    };
    return ReadList(pos, kLinkAppInfo, kApplicationName,
                    &CVelmora_LinkApplicationInfo::ApplicationName, owner.LinkAppInfo, rest,
                    ElementTrace{traced ? &traceName : nullptr});
}

template <class Owner>
char* ReadModules(CProviderManageInfo& codec, char* pos, Owner& owner) {
    return ReadList(pos, kModuleInfo, kModuleKind, &CVelmora_ManageModuleInfo::ModuleKind,
                    owner.ModuleInfo, [&](ElementCursor& c, CVelmora_ManageModuleInfo& module) {
                        c.String(kModuleName, module.ModuleName)
                            .Int(kUpdatePriority, module.UpdatePriority)
                            .Int(kUpdateStatus, module.UpdateStatus)
                            .Int(kUpdateProgress, module.UpdateProgress);
                        c.set(codec.setRepositoryInfo(c.pos(), module));
                    });
}

}  // namespace

void CProviderManageInfo::toObject(char* text, CVelmora_DevProviderManageInfo& info) {
    qel::TraceEnter(traceName(), qel::sig::kToObjectDev);
    std::string ignored;
    setManageInfo(compareItem(text, kDevProvider, ignored), info);
    qel::TraceLeave(traceName(), qel::sig::kToObjectDev);
}

void CProviderManageInfo::toObject(char* text, CVelmora_ToolProviderManageInfo& info) {
    qel::TraceEnter(traceName(), qel::sig::kToObjectTool);
    std::string ignored;
    setManageInfo(compareItem(text, kToolProvider, ignored), info);
    qel::TraceLeave(traceName(), qel::sig::kToObjectTool);
}

char* CProviderManageInfo::setManageInfo(char* pos, CVelmora_DevProviderManageInfo& info) {
    qel::TraceEnter(traceName(), qel::sig::kSetManageInfoDev);
    pos = compareItem(pos, kProviderName, info.ProviderName);
    pos = compareItem(pos, kProviderVendorName, info.ProviderVendorName);
    pos = compareItem(pos, kProviderVersion, info.ProviderVersion);
    pos = setDeviceInfo(pos, info);
    qel::TraceLeave(traceName(), qel::sig::kSetManageInfoDev);
    return pos;
}

char* CProviderManageInfo::setManageInfo(char* pos, CVelmora_ToolProviderManageInfo& info) {
    qel::TraceEnter(traceName(), qel::sig::kSetManageInfoTool);
    pos = compareItem(pos, kProviderName, info.ProviderName);
    pos = compareItem(pos, kProviderVendorName, info.ProviderVendorName);
    pos = compareItem(pos, kProviderVersion, info.ProviderVersion);
    pos = setToolInfo(pos, info);
    qel::TraceLeave(traceName(), qel::sig::kSetManageInfoTool);
    return pos;
}

char* CProviderManageInfo::setDeviceInfo(char* pos, CVelmora_DevProviderManageInfo& info) {
    return ReadList(pos, kDeviceInfo, kVendorName, &CVelmora_DeviceInfo::VendorName,
                    info.DeviceInfo, [this](ElementCursor& c, CVelmora_DeviceInfo& device) {
                        c.String(kUniqueName, device.UniqueName)
                            .String(kDeviceId, device.DeviceId)
                            .String(kHardwareVersion, device.HardwareVersion)
                            .Array(kExtendedInfo, device.ExtendedInfo);
                        c.set(setLinkAppInfo(c.pos(), device));
                        c.set(setModuleInfo(c.pos(), device));
                    });
}

char* CProviderManageInfo::setToolInfo(char* pos, CVelmora_ToolProviderManageInfo& info) {
    return ReadList(
        pos, kToolInfo, kVendorName, &CVelmora_ToolInfo::VendorName, info.ToolInfo,
        [this](ElementCursor& c, CVelmora_ToolInfo& tool) {
            c.String(kUniqueName, tool.UniqueName).Array(kExtendedInfo, tool.ExtendedInfo);
            c.set(setLinkAppInfo(c.pos(), tool));
            c.set(setModuleInfo(c.pos(), tool));
        });
}

char* CProviderManageInfo::setLinkAppInfo(char* pos, CVelmora_DeviceInfo& device) {
    return ReadLinkApps(pos, device, /*traced=*/true, traceName());
}

char* CProviderManageInfo::setLinkAppInfo(char* pos, CVelmora_ToolInfo& tool) {
    return ReadLinkApps(pos, tool, /*traced=*/false, traceName());
}

char* CProviderManageInfo::setModuleInfo(char* pos, CVelmora_DeviceInfo& device) {
    return ReadModules(*this, pos, device);
}

char* CProviderManageInfo::setModuleInfo(char* pos, CVelmora_ToolInfo& tool) {
    return ReadModules(*this, pos, tool);
}

char* CProviderManageInfo::setRepositoryInfo(char* pos, CVelmora_ManageModuleInfo& module) {
    return ReadList(
        pos, kRepositoryInfo, kApplyKind, &CVelmora_ManageRepositoryInfo::ApplyKind,
        module.RepositoryInfo, [this](ElementCursor& c, CVelmora_ManageRepositoryInfo& entry) {
            c.String(kHardwareVersion, entry.HardwareVersion)
                .String(kVendorVersion, entry.VendorVersion)
                .String(kDisplayName, entry.DisplayName)
                .String(kModulePath, entry.ModulePath)
                .Int(kPriority, entry.Priority)
                .String(kReqProviderVersion, entry.ReqProviderVersion)
                .String(kRebootAfterPreUpdate, entry.RebootAfterPreUpdate)
                .String(kRebootAfterUpdate, entry.RebootAfterUpdate)
                .String(kRebootAfterRestore, entry.RebootAfterRestore)
                .Bool(kRecovery, entry.Recovery)
                .Array(kModuleFileName, entry.ModuleFileName)
                .Array(kManualFileName, entry.ManualFileName)
                .Array(kReleasenotesFileName, entry.ReleasenotesFileName);
            c.set(setDependencyInfo(c.pos(), kDependencyInfoSelf, entry.DependencyInfoSelf));
            c.set(setDependencyInfo(c.pos(), kDependencyInfoOther, entry.DependencyInfoOther));
        });
}

char* CProviderManageInfo::setDependencyInfo(char* pos, const char* listName,
                                             std::vector<CVelmora_DependencyInfo>& deps) {
    return ReadList(pos, listName, kProviderName, &CVelmora_DependencyInfo::ProviderName, deps,
                    [](ElementCursor& c, CVelmora_DependencyInfo& dep) {
                        c.String(kVendorName, dep.VendorName)
                            .String(kUniqueName, dep.UniqueName)
                            .String(kModuleKind, dep.ModuleKind)
                            .String(kModuleName, dep.ModuleName)
                            .String(kVendorVersion, dep.VendorVersion)
                            .String(kUpperVendorVersion, dep.UpperVendorVersion);
                    });
}
