// CUpDownSchedule: update plans, module registrations and record sections
// into property objects.
#include <cstring>
#include <memory>

#include "CIWbemUtil.h"
#include "CUpDownSchedule.h"
#include "common/trace.h"
#include "codec/codec_signatures.h"
#include "codec/item_index.h"
#include "codec/item_view.h"
#include "object_list.h"
#include "schedule_signatures.h"

namespace {

const char kUpdatePlansList[] = "UpdatePlansList";
const char kProviderName[] = "ProviderName";
const char kDependencyName[] = "DependencyName";
const char kAppKey[] = "AppKey";
const char kUpdateModuleRegistInfo[] = "UpdateModuleRegistInfo";
const char kVendorName[] = "VendorName";

// The plan fields after "ProviderName", in record order; true for numbers.
const std::pair<const char*, bool> kPlanFields[] = {
    {"VendorName", false},        {"UniqueName", false},    {"DeviceId", false},
    {"ModuleKind", false},        {"UpdatePriority", true}, {"CurrentVendorVersion", false},
    {"NextVendorVersion", false}, {"DisplayName", false},   {"UpdateJudgment", true},
    {"DependencyName", false},
};

// The fields of a registered module after "VendorName", read one item each.
const char* const kRegisteredFields[] = {"UniqueName", "ModuleKind", "VendorVersion", "ModulePath"};

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
        for (const auto& field : kPlanFields) {
            char* found = getParam(q, field.first, value);
            if (found == nullptr)
                continue;
            const std::size_t nameLength = std::strlen(field.first);
            if (field.second) {
                plan->pushPlain(field.first, nameLength,
                                static_cast<int>(qel::ParseDecimal(value)));
            } else {
                plan->pushPlain(field.first, nameLength, value);
            }
            if (std::strcmp(field.first, kDependencyName) == 0)
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
    p = getParam(p, kUpdateModuleRegistInfo, value);
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
    obj.push(kUpdateModuleRegistInfo, std::move(list));
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
