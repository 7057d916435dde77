// CUpDownSchedule: update plans, module registrations and record sections
// into property objects.
#include <cstring>
#include <memory>
#include <vector>

#include "CIWbemUtil.h"
#include "CUpDownSchedule.h"
#include "common/trace.h"
#include "codec/codec_signatures.h"
#include "codec/item_index.h"
#include "codec/item_view.h"
#include "common/record_fields.h"
#include "object_list.h"
#include "schedule_signatures.h"

namespace {

using namespace qel::protocol::field;
using qel::protocol::kRegisteredModules;
using qel::protocol::kUpdatePlansList;
using qel::protocol::param::kAppKey;

struct PlanField {
    const char* name;
    std::size_t length;
    bool number;
};

// Collects the plan record's field list: the plan reader takes its fields in
// the order, and with the kinds, that the record's writers and readers use.
struct PlanFieldCollector {
    std::vector<PlanField> fields;
    void String(const char* name, const std::string&) { Add(name, false); }
    void Int(const char* name, const int&) { Add(name, true); }
    void Add(const char* name, bool number) { fields.push_back({name, std::strlen(name), number}); }
};

// The plan fields after the first, "ProviderName", which opens a plan. The
// last one, "DependencyName", is where the search for the next plan starts.
const std::vector<PlanField>& PlanFields() {
    static const std::vector<PlanField> fields = [] {
        PlanFieldCollector collector;
        const CVELMORA_UpdatePlans plan;
        qel::VisitFields(plan, collector);
        collector.fields.erase(collector.fields.begin());
        return collector.fields;
    }();
    return fields;
}

// The item at `cursor` when it is whole and named `field`. While a plan's
// items come in record order, that item is also the first of its name from
// the plan's start (every item before it is one of the plan's earlier fields,
// all named otherwise), so reading it in place finds what a forward search
// from the start finds.
char* ReadInPlace(char* cursor, const PlanField& field, std::string& value) {
    qel::ItemView item;
    qel::ScanItem(cursor, item);
    if (!item.complete() || !item.NameEquals(field.name, field.length))
        return nullptr;
    item.AssignValue(value);
    return item.next;
}

// The fields of a registered module after "VendorName", read one item each.
const char* const kRegisteredFields[] = {kUniqueName, kModuleKind, kVendorVersion, kModulePath};

using qel::ListGuard;
using qel::ObjectList;

}  // namespace

void CUpDownSchedule::String2UpdatePlans(char* pos, IWbemClassObject& obj) {
    qel::IndexScope index(*this, pos);
    std::string type, name, value;
    char* p = getItem(pos, type, name, value);
    if (p == nullptr || type != qel::item::kTagClassArray)
        return;
    std::unique_ptr<ObjectList> list(new ObjectList);
    ListGuard guard{list.get()};
    while (p != nullptr) {
        char* q = compareItem(p, kProviderName, value);
        if (q == nullptr || q == p)
            break;
        IWbemClassObject* plan = qel::AppendNew(*list);
        plan->pushPlain(kProviderName, sizeof kProviderName - 1, value);
        char* next = nullptr;
        const std::vector<PlanField>& fields = PlanFields();
        char* cursor = q;  // null once a field is out of order or missing
        for (const PlanField& field : fields) {
            char* found = cursor != nullptr ? ReadInPlace(cursor, field, value) : nullptr;
            cursor = found;
            if (found == nullptr)
                found = getParam(q, field.name, value);
            if (found == nullptr)
                continue;
            if (field.number) {
                plan->pushPlain(field.name, field.length,
                                static_cast<int>(qel::ParseDecimal(value)));
            } else {
                plan->pushPlain(field.name, field.length, value);
            }
            if (&field == &fields.back())
                next = found;
        }
        p = next;
    }
    guard.list = nullptr;  // handed over below
    CIWbemUtil::setParameterClassArrayToIWbemClassObject(&obj, kUpdatePlansList, list.release());
}

void CUpDownSchedule::String2RegisterUpdateModule(char* pos, IWbemClassObject& obj) {
    qel::TraceEnter(traceName(), qel::sig::kString2RegisterUpdateModule);
    qel::IndexScope index(*this, pos);
    std::string value;
    char* p = getParam(pos, kAppKey, value);
    if (p == nullptr)
        return;
    obj.push(kAppKey, value);
    p = getParam(p, kRegisteredModules, value);
    if (p == nullptr)
        return;
    ObjectList list;
    ListGuard guard{&list};
    while (p != nullptr) {
        p = getParam(p, kVendorName, value);
        if (p == nullptr)
            break;
        IWbemClassObject* module = qel::AppendNew(list);
        module->pushPlain(kVendorName, sizeof kVendorName - 1, value);
        for (const char* field : kRegisteredFields) {
            std::string fieldValue;  // an unmatched field is added empty
            p = compareItem(p, field, fieldValue);
            module->pushPlain(field, std::strlen(field), std::move(fieldValue));
        }
    }
    guard.list = nullptr;
    obj.push(kRegisteredModules, std::move(list));
    qel::TraceLeave(traceName(), qel::sig::kString2RegisterUpdateModule);
}

void CUpDownSchedule::String2IWbem(char* text, IWbemClassObject& obj) {
    using namespace qel::item;
    qel::TraceEnter(traceName(), qel::sig::kSectionString2IWbem);
    if (text == nullptr) {
        qel::TraceMessage(qel::kFixedSource, qel::kLevelError, qel::sig::kSectionString2IWbem,
                          qel::sig::kMsgParameterNull);
        return;
    }
    IWbemClassObject* section = nullptr;
    std::string sectionName;
    auto closeSection = [&] {
        if (section == nullptr)
            return;
        obj.push(sectionName, section);
        section->Release();  // gives up this decoder's claim; `obj` holds it now
        section = nullptr;
    };
    for (char* pos = text;;) {
        qel::ItemView item;
        qel::ScanItem(pos, item);
        if (!item.complete())
            break;
        pos = item.next;
        if (item.TagEquals(kTagClass)) {
            closeSection();
            section = new IWbemClassObject;
            sectionName = item.Name();
        } else if (item.TagEquals(kTagString)) {
            if (section != nullptr)
                section->push(item.Name(), item.Value());
        } else if (item.TagEquals(kTagInt)) {
            if (section != nullptr) {
                section->push(item.Name(), static_cast<int>(qel::ParseDecimal(item.Value())));
            }
        } else if (item.TagEquals(kTagBool)) {
            if (section != nullptr)
                section->push(item.Name(), item.Value() != kFalse);
        } else {
            qel::TraceMessage(qel::kFixedSource, qel::kLevelError, qel::sig::kSectionString2IWbem,
                              qel::sig::kMsgUnsupportedType, item.Name().c_str());
        }
    }
    closeSection();
    qel::TraceLeave(traceName(), qel::sig::kSectionString2IWbem);
}
