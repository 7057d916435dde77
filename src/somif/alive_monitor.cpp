// CSomIf: the alive-monitor parameters of the service.
#include "CSerializedMsg.h"
#include "CSomIf.h"
#include "QelItemText.h"
#include "common/trace.h"
#include "somif_signatures.h"
#include "wire.h"

namespace {

// The wire methods are singular where the operations are plural.
const char kUpdateMethod[] = "AliveMonitorUpdateParameter";
const char kClearMethod[] = "AliveMonitorClearParameter";
const char kSetMethod[] = "AliveMonitorSetParameter";
const char kGetMethod[] = "AliveMonitorGetParameter";

// A string item built by hand: the caller's text goes in unescaped.
void AppendRawStringItem(std::string& body, const char* name, const std::string& value) {
    qel::item::AppendItem(body, qel::item::kTagString, name, value);
}

}  // namespace

HRESULT CSomIf::AliveMonitorUpdateParameters() {
    qel::TraceEnter(m_traceName, qel::sig::kAliveMonitorUpdateParameters);
    int rc = TransMessage(kUpdateMethod, qel::wire::kToolServiceWD, nullptr);
    qel::TraceLeave(m_traceName, qel::sig::kAliveMonitorUpdateParameters, rc,
                    qel::RcForm::kWidenedUnsigned64);
    return qel::ZeroExtend(rc);
}

HRESULT CSomIf::AliveMonitorClearParameters() {
    qel::TraceEnter(m_traceName, qel::sig::kAliveMonitorClearParameters);
    int rc = TransMessage(kClearMethod, qel::wire::kToolServiceWD, nullptr);
    qel::TraceLeave(m_traceName, qel::sig::kAliveMonitorClearParameters, rc,
                    qel::RcForm::kWidenedUnsigned64);
    return qel::ZeroExtend(rc);
}

HRESULT CSomIf::AliveMonitorSetParameter(std::string name, std::string value) {
    qel::TraceEnter(m_traceName, qel::sig::kAliveMonitorSetParameter);
    std::string body;
    AppendRawStringItem(body, "Name", name);
    AppendRawStringItem(body, "Value", value);
    int rc = TransMessage(kSetMethod, qel::wire::kToolServiceWD, body);
    qel::TraceLeave(m_traceName, qel::sig::kAliveMonitorSetParameter, rc,
                    qel::RcForm::kWidenedUnsigned64);
    return qel::ZeroExtend(rc);
}

HRESULT CSomIf::AliveMonitorGetParameter(std::string name, std::string& value, unsigned int& type) {
    qel::TraceEnter(m_traceName, qel::sig::kAliveMonitorGetParameter);
    std::string reply;
    AppendRawStringItem(reply, "Name", name);
    int rc = TransMessage(kGetMethod, qel::wire::kToolServiceWD, reply);
    if (!qel::wire::IsNegative(rc)) {
        CSerializedMsg codec(m_traceName);
        char* body = &reply[0] + getSpecificPos(reply);
        char* next = codec.compareItem(body, "Value", value);
        int number = static_cast<int>(type);
        codec.compareItem(next, "Type", number);
        type = static_cast<unsigned int>(number);
    }
    qel::TraceLeave(m_traceName, qel::sig::kAliveMonitorGetParameter, rc, qel::RcForm::kSigned32);
    return qel::ZeroExtend(rc);
}
