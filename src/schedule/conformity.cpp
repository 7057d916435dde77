// CUpDownSchedule: the update-module conformity trees.
#include <cstring>
#include <memory>

#include "CUpDownSchedule.h"
#include "common/protocol.h"
#include "common/trace.h"
#include "codec/item_index.h"
#include "codec/item_view.h"
#include "object_list.h"
#include "schedule_signatures.h"

namespace {

using qel::ListGuard;
using qel::ObjectList;
using qel::item::kTagClassArray;
using qel::item::kTagString;

using qel::protocol::kConformityInput;
using qel::protocol::kConformityList;
using qel::protocol::param::kAppKey;
using namespace qel::protocol::conformity;

const char* const kModuleStrings[] = {kUniqueName, kDispName, kModuleName, kAttachInfo};
const char* const kAttrStrings[] = {kHardwareVersion, kVendorVersion, kReqProviderVersion};
const char* const kLinkStrings[] = {kRebootAfterPreUpdate, kRebootAfterUpdate, kRebootAfterRestore};
const char* const kFileStrings[] = {kKind, kUrl, kPhysiName, kMd5Hash};
const char* const kReferenceStrings[] = {kProviderName,      kProviderVendorName, kUpdateModuleKind,
                                         kUniqueName,        kModuleName,         kVendorVersion,
                                         kUpperVendorVersion};
const char* const kFileOpen = kKind;
const char* const kFileClose = kMd5Hash;
const char* const kReferenceOpen = kProviderName;
const char* const kReferenceClose = kUpperVendorVersion;

enum class EntryType { kNone, kString, kInt, kBool };

bool NameIs(const qel::ItemView& item, const char* name) {
    return item.NameEquals(name, std::strlen(name));
}

EntryType AttrType(const qel::ItemView& item) {
    if (NameIs(item, kPriority))
        return EntryType::kInt;
    for (const char* name : kAttrStrings) {
        if (NameIs(item, name))
            return EntryType::kString;
    }
    return EntryType::kNone;
}

EntryType LinkType(const qel::ItemView& item) {
    if (NameIs(item, kRecovery))
        return EntryType::kBool;
    for (const char* name : kLinkStrings) {
        if (NameIs(item, name))
            return EntryType::kString;
    }
    return EntryType::kNone;
}

EntryType FileType(const qel::ItemView& item) {
    for (const char* name : kFileStrings) {
        if (NameIs(item, name))
            return EntryType::kString;
    }
    return EntryType::kNone;
}

EntryType ReferenceType(const qel::ItemView& item) {
    for (const char* name : kReferenceStrings) {
        if (NameIs(item, name))
            return EntryType::kString;
    }
    return EntryType::kNone;
}

void AddEntry(IWbemClassObject& target, const qel::ItemView& item, EntryType type) {
    switch (type) {
        case EntryType::kString:
            target.push(item.Name(), item.Value());
            break;
        case EntryType::kInt:
            target.push(item.Name(), static_cast<int>(qel::ParseDecimal(item.Value())));
            break;
        case EntryType::kBool:
            target.push(item.Name(), item.Value() == qel::item::kTrue);
            break;
        case EntryType::kNone:
            break;
    }
}

// Reads the run of accepted items at `pos`; `onItem` handles each. Returns
// the position of the first item not accepted, or where reading failed.
template <class Classify, class OnItem>
char* ReadBlock(char* pos, Classify classify, OnItem onItem) {
    for (;;) {
        qel::ItemView item;
        qel::ScanItem(pos, item);
        if (!item.complete())
            return pos;
        const EntryType type = classify(item);
        if (type == EntryType::kNone)
            return pos;
        onItem(item, type);
        pos = item.next;
    }
}

// An object that is opened by one name and appended to a list by another;
// items after the closing one still go into it. An object that never closes
// is freed.
class OpenCloseList {
  public:
    explicit OpenCloseList(ObjectList* list) : list_(list) {}
    ~OpenCloseList() { DropUnlisted(); }
    void Open() {
        DropUnlisted();
        current_ = new IWbemClassObject;
        listed_ = false;
    }
    IWbemClassObject* current() const { return current_; }
    void Close() {
        if (current_ == nullptr || listed_)
            return;  // listed once, never twice
        list_->push_back(current_);
        listed_ = true;
    }

  private:
    void DropUnlisted() {
        if (!listed_)
            delete current_;
        current_ = nullptr;
    }
    ObjectList* list_;
    IWbemClassObject* current_ = nullptr;
    bool listed_ = true;
};

}  // namespace

char* CUpDownSchedule::SetUpdateAttrInfo(char* pos, IWbemClassObject* module) {
    qel::TraceEnter(traceName(), qel::sig::kSetUpdateAttrInfo);
    std::unique_ptr<IWbemClassObject> attributes(new IWbemClassObject);
    pos = ReadBlock(pos, AttrType, [&](const qel::ItemView& item, EntryType type) {
        AddEntry(*attributes, item, type);
    });
    if (module != nullptr)
        module->push(kAttrInfo, attributes.release());
    qel::TraceLeave(traceName(), qel::sig::kSetUpdateAttrInfo);
    return pos;
}

char* CUpDownSchedule::SetUpdateLinkInfo(char* pos, IWbemClassObject* module) {
    qel::TraceEnter(traceName(), qel::sig::kSetUpdateLinkInfo);
    std::unique_ptr<IWbemClassObject> links(new IWbemClassObject);
    pos = ReadBlock(pos, LinkType, [&](const qel::ItemView& item, EntryType type) {
        AddEntry(*links, item, type);
    });
    if (module != nullptr)
        module->push(kLinkInfo, links.release());
    qel::TraceLeave(traceName(), qel::sig::kSetUpdateLinkInfo);
    return pos;
}

char* CUpDownSchedule::SetUpdateFileInfo(char* pos, IWbemClassObject* module) {
    qel::TraceEnter(traceName(), qel::sig::kSetUpdateFileInfo);
    ObjectList files;
    ListGuard guard{&files};
    {
        OpenCloseList file(&files);
        pos = ReadBlock(pos, FileType, [&](const qel::ItemView& item, EntryType type) {
            if (NameIs(item, kFileOpen))
                file.Open();
            // An item before the first "Kind" has no file to go into: dropped.
            if (file.current() == nullptr)
                return;
            AddEntry(*file.current(), item, type);
            if (NameIs(item, kFileClose))
                file.Close();
        });
    }
    if (module != nullptr) {
        guard.list = nullptr;
        module->push(kFileInfo, files);
    }
    qel::TraceLeave(traceName(), qel::sig::kSetUpdateFileInfo);
    return pos;
}

// The shared reader of module references.
static char* ReadReferences(char* pos, ObjectList* list) {
    ObjectList dropped;
    ListGuard guard{&dropped};
    OpenCloseList reference(list != nullptr ? list : &dropped);
    reference.Open();  // the first "ProviderName" uses this object
    bool opened = false;
    return ReadBlock(pos, ReferenceType, [&](const qel::ItemView& item, EntryType type) {
        if (NameIs(item, kReferenceOpen)) {
            if (opened)
                reference.Open();
            opened = true;
        }
        AddEntry(*reference.current(), item, type);
        if (NameIs(item, kReferenceClose))
            reference.Close();
    });
}

char* CUpDownSchedule::SetUpdateShareInfo(char* pos, std::vector<IWbemClassObject*>* list) {
    qel::TraceEnter(traceName(), qel::sig::kSetUpdateShareInfo);
    pos = ReadReferences(pos, list);
    qel::TraceLeave(traceName(), qel::sig::kSetUpdateShareInfo);
    return pos;
}

char* CUpDownSchedule::SetUpdateSimuInfo(char* pos, std::vector<IWbemClassObject*>* list) {
    qel::TraceEnter(traceName(), qel::sig::kSetUpdateSimuInfo);
    pos = ReadReferences(pos, list);
    qel::TraceLeave(traceName(), qel::sig::kSetUpdateSimuInfo);
    return pos;
}

char* CUpDownSchedule::SetUpdateDepoInfo(char* pos, IWbemClassObject* module) {
    qel::TraceEnter(traceName(), qel::sig::kSetUpdateDepoInfo);
    std::unique_ptr<IWbemClassObject> depot(new IWbemClassObject);
    for (;;) {
        qel::ItemView item;
        qel::ScanItem(pos, item);
        if (!item.complete() || !item.TagEquals(kTagClassArray))
            break;
        const bool share = NameIs(item, kShareInfo);
        if (!share && !NameIs(item, kSimuInfo)) {
            return pos;  // an unknown list: the depot information is dropped
        }
        ObjectList references;
        ListGuard guard{&references};
        pos = share ? SetUpdateShareInfo(item.next, &references)
                    : SetUpdateSimuInfo(item.next, &references);
        guard.list = nullptr;
        depot->push(share ? kShareInfo : kSimuInfo, references);
    }
    if (module != nullptr)
        module->push(kDepoInfo, depot.release());
    qel::TraceLeave(traceName(), qel::sig::kSetUpdateDepoInfo);
    return pos;
}

namespace {

// The conformity list shared by both decoders; false when an entry without
// "ModuleInfo" abandons the whole list.
bool ReadConformityEntries(CUpDownSchedule& codec, char* p, ObjectList& list) {
    std::string value;
    while (p != nullptr) {
        p = codec.getParam(p, kProviderName, value);
        if (p == nullptr)
            break;
        std::unique_ptr<IWbemClassObject> entry(new IWbemClassObject);
        entry->push(kProviderName, value);
        for (const char* field : {kVendorName, kUpdateModuleKind}) {
            std::string fieldValue;  // an unmatched field is added empty
            p = codec.compareItem(p, field, fieldValue);
            entry->push(field, fieldValue);
        }
        char* m = codec.getParam(p, kModuleInfo, value);
        if (m == nullptr)
            return false;
        std::unique_ptr<IWbemClassObject> module(new IWbemClassObject);
        for (const char* name : kModuleStrings) {
            if (codec.compareItem2(m, name, value))
                module->push(name, value);
        }
        // The module's string items, then its blocks in any order.
        char* b = m;
        for (;;) {
            qel::ItemView item;
            qel::ScanItem(b, item);
            if (!item.complete() || !item.TagEquals(kTagString))
                break;
            b = item.next;
        }
        while (b != nullptr && *b != '\0') {
            qel::ItemView item;
            qel::ScanItem(b, item);
            if (!item.complete())
                break;
            if (NameIs(item, kAttrInfo)) {
                b = codec.SetUpdateAttrInfo(item.next, module.get());
            } else if (NameIs(item, kLinkInfo)) {
                b = codec.SetUpdateLinkInfo(item.next, module.get());
            } else if (NameIs(item, kFileInfo)) {
                b = codec.SetUpdateFileInfo(item.next, module.get());
            } else if (NameIs(item, kDepoInfo)) {
                b = codec.SetUpdateDepoInfo(item.next, module.get());
            } else {
                break;
            }
        }
        entry->push(kModuleInfo, module.release());
        list.push_back(entry.release());
        p = b;
    }
    return true;
}

}  // namespace

void CUpDownSchedule::toObject2(char* pos, IWbemClassObject& obj) {
    qel::TraceEnter(traceName(), qel::sig::kToObject2);
    qel::IndexScope index(*this, pos);
    std::string value;
    char* p = getParam(pos, kConformityList, value);
    if (p == nullptr)
        return;
    ObjectList list;
    ListGuard guard{&list};
    if (!ReadConformityEntries(*this, p, list))
        return;
    guard.list = nullptr;
    obj.push(kConformityList, list);
    qel::TraceLeave(traceName(), qel::sig::kToObject2);
}

void CUpDownSchedule::toObject(char* pos, IWbemClassObject& obj) {
    qel::TraceEnter(traceName(), qel::sig::kToObjectInput);
    qel::IndexScope index(*this, pos);
    std::string value;
    char* p = getParam(pos, kAppKey, value);
    if (p == nullptr)
        return;
    obj.push(kAppKey, value);
    p = getParam(p, kConformityInput, value);
    ObjectList list;
    ListGuard guard{&list};
    if (p != nullptr && !ReadConformityEntries(*this, p, list))
        return;
    guard.list = nullptr;
    obj.push(kConformityInput, list);
    qel::TraceLeave(traceName(), qel::sig::kToObjectInput);
}
