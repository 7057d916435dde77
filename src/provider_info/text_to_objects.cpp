// CProviderManageInfo: reply text into a tree of property objects.
//
// These readers search forward for list headers and for most fields, so a
// field missing from one element is taken from a later element of the text.
#include <cstring>
#include <memory>

#include "CProviderManageInfo.h"
#include "common/trace.h"
#include "provider_fields.h"
#include "provider_signatures.h"
#include "codec/item_index.h"
#include "codec/item_view.h"

namespace {

using namespace qel::pm;
typedef std::vector<IWbemClassObject*> ObjectList;

// A list under construction. Whatever way the reader leaves, the list is
// added to its owner as (name, vector pointer) on scope exit; every element
// is owned by the vector from the moment it is created.
class ListEntry {
  public:
    ListEntry(IWbemClassObject& owner, const char* name)
        : owner_(owner), name_(name), list_(new ObjectList) {}
    ~ListEntry() { owner_.push(name_, list_.release()); }
    ListEntry(const ListEntry&) = delete;
    ListEntry& operator=(const ListEntry&) = delete;

    IWbemClassObject& NewElement() {
        std::unique_ptr<IWbemClassObject> element(new IWbemClassObject);
        list_->push_back(element.get());
        return *element.release();
    }

  private:
    IWbemClassObject& owner_;
    const char* name_;
    std::unique_ptr<ObjectList> list_;
};

// Reads items one at a time from `pos` and keeps those whose names the
// dispatcher accepts, in any order; stops at the first other name (not
// consumed) or at the end of the text (null). Nothing is copied for an item
// that is not taken.
template <class Accept>
char* ReadConsecutive(char* pos, Accept accept) {
    while (pos != nullptr) {
        qel::ItemView item;
        qel::ScanItem(pos, item);
        if (!item.complete())
            return nullptr;
        if (!accept(item))
            return pos;
        pos = item.next;
    }
    return nullptr;
}

// The index of `item`'s name in `names`, or -1.
int NameIndex(const qel::ItemView& item, std::initializer_list<const char*> names) {
    int i = 0;
    for (const char* candidate : names) {
        if (item.NameEquals(candidate, std::strlen(candidate)))
            return i;
        ++i;
    }
    return -1;
}

int ToInt(const std::string& value) {
    return static_cast<int>(qel::ParseDecimal(value));
}

}  // namespace

void CProviderManageInfo::toObject(char* text, IWbemClassObject& out) {
    qel::TraceEnter(traceName(), qel::sig::kToObjectTree);
    qel::IndexScope index(*this, text);
    std::string ignored;
    isDevice_ = true;
    char* pos = getParam(text, kDevProvider, ignored);
    if (pos == nullptr) {
        pos = getParam(text, kToolProvider, ignored);
        if (pos == nullptr)
            return;  // neither provider: nothing added
        isDevice_ = false;
    }
    std::unique_ptr<IWbemClassObject> provider(new IWbemClassObject);
    setManageInfo(pos, *provider);
    out.push(isDevice_ ? kDevProvider : kToolProvider, provider.release());
    qel::TraceLeave(traceName(), qel::sig::kToObjectTree);
}

char* CProviderManageInfo::setManageInfo(char* pos, IWbemClassObject& provider) {
    for (const char* name : {kProviderName, kProviderVendorName, kProviderVersion}) {
        std::string value;
        pos = compareItem(pos, name, value);
        provider.push(name, value);  // pushed even when the item is missing
    }
    return isDevice_ ? setDeviceInfo(pos, provider) : setToolInfo(pos, provider);
}

// The device and tool lists share one reader; they differ in their header
// and in the fields searched from each element's start.
static char* ReadProviderList(CProviderManageInfo& codec, char* pos, IWbemClassObject& provider,
                              const char* listName, std::initializer_list<const char*> fields) {
    ListEntry list(provider, listName);
    std::string value;
    char* c = codec.getParam(pos, listName, value);
    if (c == nullptr)
        return nullptr;
    for (;;) {
        if (codec.getParam(c, kVendorName, value) == nullptr)
            return c;
        IWbemClassObject& element = list.NewElement();
        element.push(kVendorName, value);
        for (const char* name : fields) {
            if (codec.compareItem2(c, name, value))
                element.push(name, value);
        }
        char* afterApps = codec.setLinkAppInfo(c, element);
        c = codec.setModuleInfo(afterApps, element);
        if (c == nullptr)
            return nullptr;
    }
}

char* CProviderManageInfo::setDeviceInfo(char* pos, IWbemClassObject& provider) {
    return ReadProviderList(*this, pos, provider, kDeviceInfo,
                            {kUniqueName, kDeviceId, kHardwareVersion, kExtendedInfo});
}

char* CProviderManageInfo::setToolInfo(char* pos, IWbemClassObject& provider) {
    return ReadProviderList(*this, pos, provider, kToolInfo, {kUniqueName, kExtendedInfo});
}

char* CProviderManageInfo::setLinkAppInfo(char* pos, IWbemClassObject& owner) {
    ListEntry list(owner, kLinkAppInfo);
    std::string value;
    char* c = getParam(pos, kLinkAppInfo, value);
    if (c == nullptr)
        return pos;
    for (;;) {
        char* afterName = getParam(c, kApplicationName, value);
        if (afterName == nullptr)
            return c;
        IWbemClassObject& element = list.NewElement();
        element.push(kApplicationName, value);
        // The element's other fields: ExecutePath searched from the element's
        // start, DescriptionFilePath from after it. The position returned is
        // after the last field read, never before ApplicationName, so the
        // list always moves on.
        char* last = afterName;
        char* from = c;
        if (char* next = getParam(from, kExecutePath, value)) {
            element.push(kExecutePath, value);
            from = next;
            if (next > last)
                last = next;
        }
        if (char* next = getParam(from, kDescriptionFilePath, value)) {
            element.push(kDescriptionFilePath, value);
            if (next > last)
                last = next;
        }
        // The list ends when a module list follows anywhere further on: the
        // module reader expects to start at or before that header.
        if (compareItem2(last, kModuleInfo, value))
            return last;
        c = last;
    }
}

char* CProviderManageInfo::setModuleInfo(char* pos, IWbemClassObject& owner) {
    ListEntry list(owner, kModuleInfo);
    std::string value;
    char* c = getParam(pos, kModuleInfo, value);
    while (c != nullptr) {
        char* cur = getParam2(c, kModuleKind, value);
        if (cur == nullptr)
            return c;
        IWbemClassObject& element = list.NewElement();
        element.push(kModuleKind, value);
        // Each field searched from the current position; found, the reading
        // goes on after it (one forward search gives both).
        if (char* next = getParam(cur, kModuleName, value)) {
            element.push(kModuleName, value);
            cur = next;
        }
        for (const char* name : {kUpdatePriority, kUpdateStatus, kUpdateProgress}) {
            if (char* next = getParam(cur, name, value)) {
                element.push(name, ToInt(value));
                cur = next;
            }
        }
        c = setRepositoryInfo(cur, element);
    }
    return nullptr;
}

char* CProviderManageInfo::setRepositoryInfo(char* pos, IWbemClassObject& module) {
    ListEntry list(module, kRepositoryInfo);
    std::string value;
    char* c = getParam(pos, kRepositoryInfo, value);
    if (c == nullptr)
        return pos;
    for (;;) {
        char* cur = getParam2(c, kApplyKind, value);
        if (cur == nullptr)
            return c;
        IWbemClassObject& element = list.NewElement();
        element.push(kApplyKind, value);
        cur = ReadConsecutive(cur, [&](const qel::ItemView& item) {
            if (NameIndex(item, {kHardwareVersion, kVendorVersion, kDisplayName, kModulePath,
                                 kReqProviderVersion, kRebootAfterPreUpdate, kRebootAfterUpdate,
                                 kRebootAfterRestore, kModuleFileName, kManualFileName,
                                 kReleasenotesFileName}) >= 0) {
                element.push(item.Name(), item.Value());
            } else if (NameIndex(item, {kPriority}) == 0) {
                element.push(item.Name(), ToInt(item.Value()));
            } else if (NameIndex(item, {kRecovery}) == 0) {
                element.push(item.Name(), item.Value() == qel::item::kTrue);
            } else {
                return false;
            }
            return true;
        });
        c = setDependencyInfo(cur, kDependencyInfoSelf, element);
        c = setDependencyInfo(c, kDependencyInfoOther, element);
    }
}

char* CProviderManageInfo::setDependencyInfo(char* pos, const char* listName,
                                             IWbemClassObject& entry) {
    ListEntry list(entry, listName);
    std::string value;
    char* c = getParam2(pos, listName, value);
    if (c == nullptr)
        return pos;
    while (c != nullptr) {
        char* cur = getParam2(c, kProviderName, value);
        if (cur == nullptr)
            return c;
        IWbemClassObject& element = list.NewElement();
        element.push(kProviderName, value);
        c = ReadConsecutive(cur, [&](const qel::ItemView& item) {
            if (NameIndex(item, {kVendorName, kUniqueName, kModuleKind, kModuleName, kVendorVersion,
                                 kUpperVendorVersion}) < 0) {
                return false;
            }
            element.push(item.Name(), item.Value());
            return true;
        });
    }
    return nullptr;
}
