// CProviderManageInfo: reply text into a tree of property objects.
//
// These readers search forward for list headers and for most fields, so a
// field missing from one element is taken from a later element of the text.
// Which fields an element has comes from the plain layout; how each list's
// fields are searched for is each reader's own.
#include <memory>
#include <utility>

#include "CProviderManageInfo.h"
#include "common/trace.h"
#include "plain_layout.h"
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

int ToInt(const std::string& value) {
    return static_cast<int>(qel::ParseDecimal(value));
}

// How a field's value is kept in its object; a string array keeps its text.
enum class Kept { kString, kInt, kBool };

void Push(IWbemClassObject& element, const char* name, std::string value, Kept kept) {
    switch (kept) {
        case Kept::kString:
            element.push(name, std::move(value));
            break;
        case Kept::kInt:
            element.push(name, ToInt(value));
            break;
        case Kept::kBool:
            element.push(name, value == qel::item::kTrue);
            break;
    }
}

// Hands take(name, length, kept) every field of Record that is not a list,
// in layout order.
template <class Record, class Take>
struct ValueFields {
    Take& take;

    template <std::size_t N, class T>
    void String(const char (&name)[N], T Record::*) {
        take(name, N - 1, Kept::kString);
    }
    template <std::size_t N, class T>
    void Int(const char (&name)[N], T Record::*) {
        take(name, N - 1, Kept::kInt);
    }
    template <std::size_t N, class T>
    void Bool(const char (&name)[N], T Record::*) {
        take(name, N - 1, Kept::kBool);
    }
    template <std::size_t N, class T>
    void Array(const char (&name)[N], T Record::*) {
        take(name, N - 1, Kept::kString);
    }
    template <std::size_t N, class T>
    void List(const char (&)[N], T Record::*, ListHeader) {}
};

template <class Record, class Take>
void ForEachValueField(Take take) {
    ValueFields<Record, Take> fields{take};
    VisitPlainFields(PlainRecord<Record>(), fields);
}

// The field whose presence tells that an element of Record is there.
template <class Record>
const char* FirstField() {
    const char* first = nullptr;
    ForEachValueField<Record>([&](const char* name, std::size_t, Kept) {
        if (first == nullptr)
            first = name;
    });
    return first;
}

// The fields after the first, lists left out.
template <class Record, class Take>
void ForEachLaterField(Take take) {
    bool first = true;
    ForEachValueField<Record>([&](const char* name, std::size_t length, Kept kept) {
        if (first)
            first = false;
        else
            take(name, length, kept);
    });
}

// Keeps `item` in `element` when it is one of Record's fields after the
// first; false for any other name.
template <class Record>
bool TakeLaterField(const qel::ItemView& item, IWbemClassObject& element) {
    bool taken = false;
    ForEachLaterField<Record>([&](const char* name, std::size_t length, Kept kept) {
        if (!taken && item.NameEquals(name, length)) {
            Push(element, name, item.Value(), kept);
            taken = true;
        }
    });
    return taken;
}

// Searches for each of Record's fields after the first forward from `from`,
// every search going on after the field found before it. Returns the
// furthest position reached, at least `last`.
template <class Record>
char* SearchLaterFields(CProviderManageInfo& codec, IWbemClassObject& element, char* from,
                        char* last) {
    std::string value;
    ForEachLaterField<Record>([&](const char* name, std::size_t, Kept kept) {
        if (char* next = codec.getParam(from, name, value)) {
            Push(element, name, value, kept);
            from = next;
            if (next > last)
                last = next;
        }
    });
    return last;
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
    auto take = [&](const char* name, std::size_t, Kept kept) {
        std::string value;
        pos = compareItem(pos, name, value);
        Push(provider, name, value, kept);  // pushed even when the item is missing
    };
    if (isDevice_)
        ForEachValueField<CVelmora_DevProviderManageInfo>(take);
    else
        ForEachValueField<CVelmora_ToolProviderManageInfo>(take);
    return isDevice_ ? setDeviceInfo(pos, provider) : setToolInfo(pos, provider);
}

// The device and tool lists share one reader; they differ in their header
// and in the fields, which are searched from each element's start.
template <class Record>
static char* ReadProviderList(CProviderManageInfo& codec, char* pos, IWbemClassObject& provider,
                              const char* listName) {
    ListEntry list(provider, listName);
    std::string value;
    char* c = codec.getParam(pos, listName, value);
    if (c == nullptr)
        return nullptr;
    for (;;) {
        if (codec.getParam(c, FirstField<Record>(), value) == nullptr)
            return c;
        IWbemClassObject& element = list.NewElement();
        element.push(FirstField<Record>(), value);
        ForEachLaterField<Record>([&](const char* name, std::size_t, Kept kept) {
            if (codec.compareItem2(c, name, value))
                Push(element, name, value, kept);
        });
        char* afterApps = codec.setLinkAppInfo(c, element);
        c = codec.setModuleInfo(afterApps, element);
        if (c == nullptr)
            return nullptr;
    }
}

char* CProviderManageInfo::setDeviceInfo(char* pos, IWbemClassObject& provider) {
    return ReadProviderList<CVelmora_DeviceInfo>(*this, pos, provider, kDeviceInfo);
}

char* CProviderManageInfo::setToolInfo(char* pos, IWbemClassObject& provider) {
    return ReadProviderList<CVelmora_ToolInfo>(*this, pos, provider, kToolInfo);
}

char* CProviderManageInfo::setLinkAppInfo(char* pos, IWbemClassObject& owner) {
    ListEntry list(owner, kLinkAppInfo);
    std::string value;
    char* c = getParam(pos, kLinkAppInfo, value);
    if (c == nullptr)
        return pos;
    for (;;) {
        typedef CVelmora_LinkApplicationInfo Record;
        char* afterName = getParam(c, FirstField<Record>(), value);
        if (afterName == nullptr)
            return c;
        IWbemClassObject& element = list.NewElement();
        element.push(FirstField<Record>(), value);
        // The element's other fields are searched from the element's start,
        // not from after its name. The position returned is after the last
        // field read, never before the name, so the list always moves on.
        char* last = SearchLaterFields<Record>(*this, element, c, afterName);
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
        typedef CVelmora_ManageModuleInfo Record;
        char* cur = getParam2(c, FirstField<Record>(), value);
        if (cur == nullptr)
            return c;
        IWbemClassObject& element = list.NewElement();
        element.push(FirstField<Record>(), value);
        // Each field searched from the current position; found, the reading
        // goes on after it (one forward search gives both).
        cur = SearchLaterFields<Record>(*this, element, cur, cur);
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
        typedef CVelmora_ManageRepositoryInfo Record;
        char* cur = getParam2(c, FirstField<Record>(), value);
        if (cur == nullptr)
            return c;
        IWbemClassObject& element = list.NewElement();
        element.push(FirstField<Record>(), value);
        cur = ReadConsecutive(
            cur, [&](const qel::ItemView& item) { return TakeLaterField<Record>(item, element); });
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
        typedef CVelmora_DependencyInfo Record;
        char* cur = getParam2(c, FirstField<Record>(), value);
        if (cur == nullptr)
            return c;
        IWbemClassObject& element = list.NewElement();
        element.push(FirstField<Record>(), value);
        c = ReadConsecutive(
            cur, [&](const qel::ItemView& item) { return TakeLaterField<Record>(item, element); });
    }
    return nullptr;
}
