// CSomIf: the alive-monitor parameters of the service.
#include "CSerializedMsg.h"
#include "CSomIf.h"
#include "QelItemText.h"
#include "common/trace.h"
#include "exchange.h"
#include "somif_signatures.h"
#include "wire.h"

namespace {

// A string item built by hand: the caller's text goes in unescaped.
void AppendRawStringItem(std::string& body, const char* name, const std::string& value) {
    qel::item::AppendItem(body, qel::item::kTagString, name, value);
}

}  // namespace

HRESULT CSomIf::AliveMonitorUpdateParameters() {
    qel::TraceEnter(TraceName(), qel::sig::kAliveMonitorUpdateParameters);
    int rc = TransMessage(qel::wire::method::kAliveUpdate, qel::wire::kToolServiceWD, nullptr);
    qel::TraceLeave(TraceName(), qel::sig::kAliveMonitorUpdateParameters, rc,
                    qel::RcForm::kWidenedUnsigned64);
    return qel::ZeroExtend(rc);
}

HRESULT CSomIf::AliveMonitorClearParameters() {
    qel::TraceEnter(TraceName(), qel::sig::kAliveMonitorClearParameters);
    int rc = TransMessage(qel::wire::method::kAliveClear, qel::wire::kToolServiceWD, nullptr);
    qel::TraceLeave(TraceName(), qel::sig::kAliveMonitorClearParameters, rc,
                    qel::RcForm::kWidenedUnsigned64);
    return qel::ZeroExtend(rc);
}

HRESULT CSomIf::AliveMonitorSetParameter(std::string name, std::string value) {
    qel::TraceEnter(TraceName(), qel::sig::kAliveMonitorSetParameter);
    std::string body;
    AppendRawStringItem(body, qel::wire::param::kName, name);
    AppendRawStringItem(body, qel::wire::param::kValue, value);
    int rc = TransMessage(qel::wire::method::kAliveSet, qel::wire::kToolServiceWD, body);
    qel::TraceLeave(TraceName(), qel::sig::kAliveMonitorSetParameter, rc,
                    qel::RcForm::kWidenedUnsigned64);
    return qel::ZeroExtend(rc);
}

HRESULT CSomIf::AliveMonitorGetParameter(std::string name, std::string& value, unsigned int& type) {
    qel::TraceEnter(TraceName(), qel::sig::kAliveMonitorGetParameter);
    std::string request;
    AppendRawStringItem(request, qel::wire::param::kName, name);
    const qel::somif::Exchanged exchanged = qel::somif::Exchange(
        *this, TraceName(), qel::wire::method::kAliveGet, qel::wire::kToolServiceWD, request);
    const int rc = exchanged.rc;
    if (!qel::wire::IsNegative(rc)) {
        CSerializedMsg codec(TraceName());
        char* next = codec.compareItem(exchanged.reply.body, qel::wire::param::kValue, value);
        int number = static_cast<int>(type);
        codec.compareItem(next, qel::wire::param::kType, number);
        type = static_cast<unsigned int>(number);
    }
    qel::TraceLeave(TraceName(), qel::sig::kAliveMonitorGetParameter, rc, qel::RcForm::kSigned32);
    return qel::ZeroExtend(rc);
}
