// JSON mapping of the suite's record classes, shared by somd (scenario and
// state files) and somctl (--json output). The records' field lists drive
// it: keys are the field names, list-valued fields become arrays, and keys
// that are missing keep the field's default.
#ifndef QEL_TOOLS_COMMON_RECORD_JSON_H
#define QEL_TOOLS_COMMON_RECORD_JSON_H

#include <stdexcept>
#include <utility>

#include <nlohmann/json.hpp>

#include "common/record_fields.h"

namespace qel {
namespace json_fields {

// Every field, scalar or list, under its name.
class Writer {
  public:
    explicit Writer(nlohmann::json& out) : out_(out) {}
    template <class T>
    void String(const char* name, const T& value) {
        out_[name] = value;
    }
    template <class T>
    void Int(const char* name, const T& value) {
        out_[name] = value;
    }
    template <class T>
    void UInt(const char* name, const T& value) {
        out_[name] = value;
    }
    template <class T>
    void Bool(const char* name, const T& value) {
        out_[name] = value;
    }
    template <class T>
    void List(const char* name, const T& value) {
        out_[name] = value;
    }

  private:
    nlohmann::json& out_;
};

// Reads the fields that are present; a value of the wrong type throws.
class Reader {
  public:
    explicit Reader(const nlohmann::json& in) : in_(in) {
        if (!in_.is_object())
            throw std::invalid_argument("a record is not a JSON object");
    }
    template <class T>
    void String(const char* name, T& value) {
        Read(name, value);
    }
    template <class T>
    void Int(const char* name, T& value) {
        Read(name, value);
    }
    template <class T>
    void UInt(const char* name, T& value) {
        Read(name, value);
    }
    template <class T>
    void Bool(const char* name, T& value) {
        Read(name, value);
    }
    template <class T>
    void List(const char* name, T& value) {
        Read(name, value);
    }

  private:
    template <class T>
    void Read(const char* name, T& value) {
        const auto it = in_.find(name);
        if (it != in_.end())
            it->get_to(value);
    }
    const nlohmann::json& in_;
};

}  // namespace json_fields
}  // namespace qel

// Found by argument-dependent lookup for the record classes (global
// namespace); any other type has no field list and so no overload here.
template <class R>
auto to_json(nlohmann::json& j, const R& record)
    -> decltype(qel::VisitFields(record, std::declval<qel::json_fields::Writer&>())) {
    j = nlohmann::json::object();
    qel::json_fields::Writer writer(j);
    qel::VisitFields(record, writer);
}

template <class R>
auto from_json(const nlohmann::json& j, R& record)
    -> decltype(qel::VisitFields(record, std::declval<qel::json_fields::Reader&>())) {
    qel::json_fields::Reader reader(j);
    qel::VisitFields(record, reader);
}

#endif  // QEL_TOOLS_COMMON_RECORD_JSON_H
