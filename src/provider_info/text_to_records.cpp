// CProviderManageInfo: the positional readers of reply text into records.
#include <cassert>

#include "CProviderManageInfo.h"
#include "codec/item_view.h"
#include "common/trace.h"
#include "plain_layout.h"
#include "provider_fields.h"
#include "provider_signatures.h"

namespace {

using namespace qel::pm;

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

// A nested list is read by the codec's reader of that list, found by the
// types of its owner and its elements.
template <class Owner>
char* ReadNested(CProviderManageInfo& codec, char* pos, const char*, Owner& owner,
                 std::vector<CVelmora_LinkApplicationInfo>&) {
    return codec.setLinkAppInfo(pos, owner);
}

template <class Owner>
char* ReadNested(CProviderManageInfo& codec, char* pos, const char*, Owner& owner,
                 std::vector<CVelmora_ManageModuleInfo>&) {
    return codec.setModuleInfo(pos, owner);
}

char* ReadNested(CProviderManageInfo& codec, char* pos, const char*,
                 CVelmora_ManageModuleInfo& module, std::vector<CVelmora_ManageRepositoryInfo>&) {
    return codec.setRepositoryInfo(pos, module);
}

// The entry's two dependency lists share one reader, which takes the name.
char* ReadNested(CProviderManageInfo& codec, char* pos, const char* listName,
                 CVelmora_ManageRepositoryInfo&, std::vector<CVelmora_DependencyInfo>& deps) {
    return codec.setDependencyInfo(pos, listName, deps);
}

char* ReadNested(CProviderManageInfo& codec, char* pos, const char*,
                 CVelmora_DevProviderManageInfo& info, std::vector<CVelmora_DeviceInfo>&) {
    return codec.setDeviceInfo(pos, info);
}

char* ReadNested(CProviderManageInfo& codec, char* pos, const char*,
                 CVelmora_ToolProviderManageInfo& info, std::vector<CVelmora_ToolInfo>&) {
    return codec.setToolInfo(pos, info);
}

// Reads the fields of a record at a cursor, one item per field in layout
// order; a field that is not the item at the cursor is skipped without
// moving on.
//
// Made for a list, it first reads the first field of a new element: the
// element is made in its place in the list once that field is known to be
// there (an unreadable one counts as there, and an unclosed one leaves it
// empty), so no record is built to be moved. Without that field the list
// ends, and the other fields are not read.
template <class Record>
class FieldReader {
  public:
    FieldReader(CProviderManageInfo& codec, char* pos, Record& record)
        : codec_(codec), pos_(pos), record_(&record), state_(kRest) {}
    FieldReader(CProviderManageInfo& codec, char* pos, std::vector<Record>& list)
        : codec_(codec), pos_(pos), list_(&list), state_(kFirst) {}

    char* pos() const { return pos_; }
    bool ended() const { return state_ == kEnded; }

    template <std::size_t N>
    QEL_INLINE_READER void String(const char (&name)[N], std::string Record::*field) {
        if (state_ == kFirst)
            First(name, field);
        else if (state_ == kRest)
            pos_ = qel::ReadItem(pos_, name, record_->*field);
    }
    template <std::size_t N>
    QEL_INLINE_READER void Int(const char (&name)[N], int Record::*field) {
        Rest(name, field);
    }
    template <std::size_t N>
    QEL_INLINE_READER void Bool(const char (&name)[N], bool Record::*field) {
        Rest(name, field);
    }
    template <std::size_t N>
    QEL_INLINE_READER void Array(const char (&name)[N], std::vector<std::string> Record::*field) {
        Rest(name, field);
    }
    template <std::size_t N, class Element>
    QEL_INLINE_READER void List(const char (&name)[N], std::vector<Element> Record::*field,
                                ListHeader) {
        assert(state_ != kFirst);
        if (state_ == kRest)
            pos_ = ReadNested(codec_, pos_, name, *record_, record_->*field);
    }

  private:
    enum State { kFirst, kRest, kEnded };

    template <std::size_t N>
    QEL_INLINE_READER void First(const char (&name)[N], std::string Record::*field) {
        // An element's keys are matched by their last path component, so
        // the path "List[i]/" itself is never built.
        const std::size_t count = list_->size();
        char* next = qel::CompareOne(
            pos_, name,
            [&](const qel::ItemView& item) { item.AssignValue(list_->emplace_back().*field); },
            [] {});
        if (next == pos_) {
            state_ = kEnded;
            return;
        }
        if (list_->size() == count)
            list_->emplace_back();
        record_ = &list_->back();
        pos_ = next;
        state_ = kRest;
    }

    template <std::size_t N, class T>
    QEL_INLINE_READER void Rest(const char (&name)[N], T Record::*field) {
        assert(state_ != kFirst);
        if (state_ == kRest)
            pos_ = qel::ReadItem(pos_, name, record_->*field);
    }

    CProviderManageInfo& codec_;
    char* pos_;
    std::vector<Record>* list_ = nullptr;
    Record* record_ = nullptr;
    State state_;
};

// The shape of every list: for element i an optional header named after
// the list, then the first field, whose absence ends the list, then the rest.
template <class Record>
char* ReadList(CProviderManageInfo& codec, char* pos, const char* listName,
               std::vector<Record>& list, const ElementTrace& trace = ElementTrace()) {
    for (;;) {
        trace.Begin();
        char* atElement = qel::CompareOne(
            pos, listName, [](const qel::ItemView&) {}, [] {});
        FieldReader<Record> element(codec, atElement, list);
        VisitPlainFields(PlainRecord<Record>(), element);
        if (element.ended())
            return atElement;
        trace.Appended();
        pos = element.pos();
    }
}

// Reads the one list of Elements that `owner` holds, under the name that
// the layout gives it.
template <class Element, class Owner>
class OwnedList {
  public:
    OwnedList(CProviderManageInfo& codec, char* pos, Owner& owner, const ElementTrace& trace)
        : codec_(codec), pos_(pos), owner_(owner), trace_(trace) {}

    char* pos() const { return pos_; }

    template <std::size_t N, class T>
    void String(const char (&)[N], T Owner::*) {}
    template <std::size_t N, class T>
    void Int(const char (&)[N], T Owner::*) {}
    template <std::size_t N, class T>
    void Bool(const char (&)[N], T Owner::*) {}
    template <std::size_t N, class T>
    void Array(const char (&)[N], T Owner::*) {}
    template <std::size_t N>
    void List(const char (&name)[N], std::vector<Element> Owner::*field, ListHeader) {
        pos_ = ReadList(codec_, pos_, name, owner_.*field, trace_);
    }
    template <std::size_t N, class Other>
    void List(const char (&)[N], std::vector<Other> Owner::*, ListHeader) {}

  private:
    CProviderManageInfo& codec_;
    char* pos_;
    Owner& owner_;
    const ElementTrace& trace_;
};

template <class Element, class Owner>
char* ReadOwnedList(CProviderManageInfo& codec, char* pos, Owner& owner,
                    const ElementTrace& trace = ElementTrace()) {
    OwnedList<Element, Owner> list(codec, pos, owner, trace);
    VisitPlainFields(PlainRecord<Owner>(), list);
    return list.pos();
}

// setManageInfo's reading of the provider's fields and lists.
template <class Provider>
char* ReadProvider(CProviderManageInfo& codec, char* pos, Provider& info) {
    FieldReader<Provider> fields(codec, pos, info);
    VisitPlainFields(PlainRecord<Provider>(), fields);
    return fields.pos();
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
    pos = ReadProvider(*this, pos, info);
    qel::TraceLeave(traceName(), qel::sig::kSetManageInfoDev);
    return pos;
}

char* CProviderManageInfo::setManageInfo(char* pos, CVelmora_ToolProviderManageInfo& info) {
    qel::TraceEnter(traceName(), qel::sig::kSetManageInfoTool);
    pos = ReadProvider(*this, pos, info);
    qel::TraceLeave(traceName(), qel::sig::kSetManageInfoTool);
    return pos;
}

char* CProviderManageInfo::setDeviceInfo(char* pos, CVelmora_DevProviderManageInfo& info) {
    return ReadOwnedList<CVelmora_DeviceInfo>(*this, pos, info);
}

char* CProviderManageInfo::setToolInfo(char* pos, CVelmora_ToolProviderManageInfo& info) {
    return ReadOwnedList<CVelmora_ToolInfo>(*this, pos, info);
}

char* CProviderManageInfo::setLinkAppInfo(char* pos, CVelmora_DeviceInfo& device) {
    return ReadOwnedList<CVelmora_LinkApplicationInfo>(*this, pos, device,
                                                       ElementTrace{&traceName()});
}

char* CProviderManageInfo::setLinkAppInfo(char* pos, CVelmora_ToolInfo& tool) {
    return ReadOwnedList<CVelmora_LinkApplicationInfo>(*this, pos, tool);
}

char* CProviderManageInfo::setModuleInfo(char* pos, CVelmora_DeviceInfo& device) {
    return ReadOwnedList<CVelmora_ManageModuleInfo>(*this, pos, device);
}

char* CProviderManageInfo::setModuleInfo(char* pos, CVelmora_ToolInfo& tool) {
    return ReadOwnedList<CVelmora_ManageModuleInfo>(*this, pos, tool);
}

char* CProviderManageInfo::setRepositoryInfo(char* pos, CVelmora_ManageModuleInfo& module) {
    return ReadOwnedList<CVelmora_ManageRepositoryInfo>(*this, pos, module);
}

char* CProviderManageInfo::setDependencyInfo(char* pos, const char* listName,
                                             std::vector<CVelmora_DependencyInfo>& deps) {
    return ReadList(*this, pos, listName, deps);
}
