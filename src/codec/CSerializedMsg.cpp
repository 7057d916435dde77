// CSerializedMsg: construction and the encoder.
#include "CSerializedMsg.h"

#include <exception>

#include <boost/shared_ptr.hpp>

#include "codec_signatures.h"
#include "common/trace.h"

namespace {

typedef std::vector<IWbemClassObject*> ObjectVector;
typedef std::vector<std::string> StringVector;

}  // namespace

CSerializedMsg::CSerializedMsg(std::string traceName) : traceName_(std::move(traceName)) {}

CSerializedMsg::~CSerializedMsg() = default;

void CSerializedMsg::IWbem2String(IWbemClassObject& obj, std::string& out) {
    // Writes the "class[]" item and then each element on its own guard: a
    // failing element is traced and skipped, the rest are still written.
    auto writeArray = [&](const std::string& name, ObjectVector* list) {
        obj.SetClassArray(out, name, list);
        for (IWbemClassObject* element : *list) {
            try {
                if (element == nullptr) {
                    qel::TraceMessage(traceName_, qel::kLevelError, qel::sig::kIWbem2String,
                                      qel::sig::kMsgInvalidParameterKey, name.c_str());
                    continue;
                }
                IWbem2String(*element, out);
            } catch (const std::bad_exception& e) {
                qel::TraceMessage(traceName_, qel::kLevelError, qel::sig::kIWbem2String,
                                  qel::sig::kMsgSegmentationFault, e.what());
            } catch (...) {
                qel::TraceMessage(traceName_, qel::kLevelError, qel::sig::kIWbem2String,
                                  qel::sig::kMsgInvalidParameterKey, name.c_str());
            }
        }
    };
    auto writeNested = [&](const std::string& name, IWbemClassObject* nested) {
        if (nested == nullptr) {  // never dereferenced; nothing is written for it
            qel::TraceMessage(traceName_, qel::kLevelError, qel::sig::kIWbem2String,
                              qel::sig::kMsgInvalidParameterKey, name.c_str());
            return;
        }
        obj.SetClass(out, name, *nested);
        IWbem2String(*nested, out);
    };

    for (auto it = obj.getIterator(); obj.hasNext(it); ++it) {
        const std::string name = it->first;
        const boost::any& value = it->second;
        if (const auto* s = boost::any_cast<std::string>(&value)) {
            obj.SetString(out, name, *s);
        } else if (const auto* i = boost::any_cast<int>(&value)) {
            obj.SetInt(out, name, *i);
        } else if (const auto* u = boost::any_cast<unsigned int>(&value)) {
            obj.SetUInt(out, name, *u);
        } else if (const auto* l = boost::any_cast<long>(&value)) {
            obj.SetLong(out, name, *l);
        } else if (const auto* ul = boost::any_cast<unsigned long>(&value)) {
            obj.SetULong(out, name, *ul);
        } else if (const auto* b = boost::any_cast<bool>(&value)) {
            obj.SetBool(out, name, *b);
        } else if (const auto* sp = boost::any_cast<boost::shared_ptr<StringVector>>(&value)) {
            obj.SetStringArray(out, name, *sp ? **sp : StringVector());
        } else if (const auto* sv = boost::any_cast<StringVector>(&value)) {
            obj.SetStringArray(out, name, *sv);
        } else if (const auto* p = boost::any_cast<IWbemClassObject*>(&value)) {
            writeNested(name, *p);
        } else if (const auto* sp = boost::any_cast<boost::shared_ptr<IWbemClassObject>>(&value)) {
            writeNested(name, sp->get());
        } else if (const auto* ov = boost::any_cast<ObjectVector>(&value)) {
            writeArray(name, const_cast<ObjectVector*>(ov));  // only read
        } else if (const auto* op = boost::any_cast<ObjectVector*>(&value)) {
            if (*op != nullptr) {
                writeArray(name, *op);
            } else {
                qel::TraceMessage(traceName_, qel::kLevelError, qel::sig::kIWbem2String,
                                  qel::sig::kMsgInvalidParameterKey, name.c_str());
            }
        } else if (const auto* osp = boost::any_cast<boost::shared_ptr<ObjectVector>>(&value)) {
            if (*osp) {
                writeArray(name, osp->get());
            } else {
                qel::TraceMessage(traceName_, qel::kLevelError, qel::sig::kIWbem2String,
                                  qel::sig::kMsgInvalidParameterKey, name.c_str());
            }
        } else {
            qel::TraceMessage(traceName_, qel::kLevelError, qel::sig::kIWbem2String,
                              qel::sig::kMsgInvalidAnyType, name.c_str());
        }
    }
}
