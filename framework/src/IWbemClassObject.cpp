#include "IWbemClassObject.h"

#include <string>
#include <unordered_set>

#include "QelItemText.h"

namespace {

typedef std::vector<IWbemClassObject*> ObjectVector;

// The nested objects that an entry's value holds, and the vector to free
// with them when the value holds one by pointer.
template <typename Visit>
void ForEachOwned(const boost::any& value, Visit visit, ObjectVector** ownedVector) {
    *ownedVector = nullptr;
    if (const auto* single = boost::any_cast<IWbemClassObject*>(&value)) {
        visit(*single);
    } else if (const auto* list = boost::any_cast<ObjectVector>(&value)) {
        for (IWbemClassObject* element : *list)
            visit(element);
    } else if (const auto* listPtr = boost::any_cast<ObjectVector*>(&value)) {
        if (*listPtr != nullptr) {
            for (IWbemClassObject* element : **listPtr)
                visit(element);
            *ownedVector = *listPtr;
        }
    }
}

}  // namespace

IWbemContext::~IWbemContext() = default;
IWbemCallResult::~IWbemCallResult() = default;

IWbemClassObject::IWbemClassObject() = default;

IWbemClassObject::~IWbemClassObject() {
    // Collect first, then delete: the same object may sit in an entry and in
    // a vector, and it must be freed once.
    std::unordered_set<IWbemClassObject*> objects;
    std::vector<ObjectVector*> vectors;
    for (const Entry& entry : entries_) {
        ObjectVector* ownedVector = nullptr;
        ForEachOwned(
            entry.second,
            [&](IWbemClassObject* obj) {
                if (obj != nullptr && obj != this)
                    objects.insert(obj);
            },
            &ownedVector);
        if (ownedVector != nullptr)
            vectors.push_back(ownedVector);
    }
    entries_.clear();
    for (IWbemClassObject* obj : objects)
        delete obj;
    std::unordered_set<ObjectVector*> freed;
    for (ObjectVector* vec : vectors) {
        if (freed.insert(vec).second)
            delete vec;
    }
}

void IWbemClassObject::Release() {
    if (!held_)
        delete this;
}

void IWbemClassObject::TakeOver(const boost::any& value) {
    ObjectVector* ownedVector = nullptr;
    ForEachOwned(
        value,
        [](IWbemClassObject* obj) {
            if (obj != nullptr)
                obj->held_ = true;
        },
        &ownedVector);
}

void IWbemClassObject::push(std::string name, boost::any value) {
    TakeOver(value);
    entries_.emplace_back(std::move(name), std::move(value));
}

const boost::any* IWbemClassObject::Get(const std::string& name) const {
    for (auto it = entries_.rbegin(); it != entries_.rend(); ++it) {
        if (it->first == name)
            return &it->second;
    }
    return nullptr;
}

boost::any* IWbemClassObject::Get(const std::string& name) {
    return const_cast<boost::any*>(static_cast<const IWbemClassObject*>(this)->Get(name));
}

void IWbemClassObject::SetString(std::string& out, std::string name, std::string value) {
    qel::item::AppendStringItem(out, name, value);
}

void IWbemClassObject::SetString(std::string& out, std::string prefix, std::string name,
                                 std::string value) {
    qel::item::AppendStringItem(out, prefix, name, value);
}

void IWbemClassObject::SetInt(std::string& out, std::string name, int value) {
    qel::item::AppendIntItem(out, name, value);
}

void IWbemClassObject::SetInt(std::string& out, std::string prefix, std::string name, int value) {
    qel::item::AppendIntItem(out, prefix + name, value);
}

void IWbemClassObject::SetUInt(std::string& out, std::string name, unsigned int value) {
    qel::item::AppendIntItem(out, name, value, qel::item::kTagUInt);
}

void IWbemClassObject::SetLong(std::string& out, std::string name, long value) {
    qel::item::AppendIntItem(out, name, value, qel::item::kTagLong);
}

void IWbemClassObject::SetULong(std::string& out, std::string name, unsigned long value) {
    qel::item::AppendItem(out, qel::item::kTagULong, name, std::to_string(value));
}

void IWbemClassObject::SetBool(std::string& out, std::string name, bool value) {
    qel::item::AppendBoolItem(out, name, value);
}

void IWbemClassObject::SetBool(std::string& out, std::string prefix, std::string name, bool value) {
    qel::item::AppendBoolItem(out, prefix + name, value);
}

void IWbemClassObject::SetStringArray(std::string& out, std::string name,
                                      std::vector<std::string> values) {
    qel::item::AppendStringArrayItem(out, name, values);
}

void IWbemClassObject::SetClass(std::string& out, std::string name, const IWbemClassObject&) {
    qel::item::AppendItem(out, qel::item::kTagClass, name, std::string());
}

void IWbemClassObject::SetClassArray(std::string& out, std::string name,
                                     std::vector<IWbemClassObject*>*) {
    qel::item::AppendItem(out, qel::item::kTagClassArray, name, std::string());
}
