// CSomIf: the WBEM method relay.
#include "CIWbemUtil.h"
#include "CSerializedMsg.h"
#include "CSomIf.h"
#include "common/trace.h"
#include "exchange.h"
#include "somif_signatures.h"
#include "wire.h"

namespace {

void EnsureOutput(IWbemClassObject** outParams) {
    if (*outParams == nullptr)
        *outParams = new IWbemClassObject;
}

// The code widened with its sign: what ReturnValue holds.
unsigned long SignWidened(int rc) {
    return static_cast<unsigned long>(static_cast<long>(rc));
}

}  // namespace

HRESULT CSomIf::ExecMethod(OLECHAR* className, OLECHAR* methodName, long, IWbemContext*,
                           IWbemClassObject* inParams, IWbemClassObject** outParams,
                           IWbemCallResult**) {
    qel::TraceEnter(TraceName(), qel::sig::kExecMethod);
    if (className == nullptr || methodName == nullptr)
        return -1;
    std::string body;
    CSerializedMsg codec(TraceName());
    if (inParams != nullptr)
        codec.IWbem2String(*inParams, body);
    EnsureOutput(outParams);
    const qel::somif::Exchanged exchanged =
        qel::somif::Exchange(*this, TraceName(), methodName, className, body);
    int rc = exchanged.rc;
    if (!qel::wire::IsTransportFamily(rc)) {
        CIWbemUtil::setReturnValueToIWbemClassObject(*outParams, SignWidened(rc));
        rc = 0;
    }
    // Items of the reply's body (a "ReturnValue" among them) stand on top.
    codec.String2IWbem(exchanged.reply.body, **outParams);
    qel::TraceLeave(TraceName(), qel::sig::kExecMethod, rc, qel::RcForm::kSigned32);
    return qel::ZeroExtend(rc);
}

int CSomIf::TransUmMessage(std::string className, std::string methodName,
                           IWbemClassObject* inParams, IWbemClassObject** outParams) {
    qel::TraceEnter(TraceName(), qel::sig::kTransUmMessage, className + " " + methodName);
    std::string body;
    CSerializedMsg codec(TraceName());
    if (inParams != nullptr)
        codec.IWbem2String(*inParams, body);
    EnsureOutput(outParams);
    const int rc = qel::somif::Exchange(*this, TraceName(), methodName.c_str(), className, body).rc;
    if (!qel::wire::IsTransportFamily(rc))
        CIWbemUtil::setReturnValueToIWbemClassObject(*outParams, SignWidened(rc));
    qel::TraceLeave(TraceName(), qel::sig::kTransUmMessage, rc, qel::RcForm::kSigned32);
    return rc;
}

namespace {

// One relayed entry point: its wire method and whether its entry trace
// names the class.
struct RelayedMethod {
    const char* signature;
    const char* wireMethod;
    bool traceClass;
};

const RelayedMethod kReboot = {qel::sig::kReboot, qel::wire::method::kReboot, true};
const RelayedMethod kApplyCheck = {qel::sig::kExecuteUpdateApplyCheck,
                                   qel::wire::method::kExecuteUpdateApplyCheck, true};
const RelayedMethod kRegister = {qel::sig::kRegisterUpdateModule,
                                 qel::wire::method::kRegisterUpdateModule, true};
const RelayedMethod kDependency = {qel::sig::kSetDependencyInfo,
                                   qel::wire::method::kSetDependencyInfo, true};
const RelayedMethod kRelease = {qel::sig::kReleaseOperatingAuthorityRelay,
                                qel::wire::method::kReleaseOperatingAuthority, true};
const RelayedMethod kAuthority = {qel::sig::kGetOperationAuthority,
                                  qel::wire::method::kGetOperatingAuthority, true};
const RelayedMethod kRestore = {qel::sig::kExecuteUpdateRestore,
                                qel::wire::method::kExecuteUpdateRestore, true};
const RelayedMethod kPreUpdate = {qel::sig::kExecutePreUpdate, qel::wire::method::kExecutePreUpdate,
                                  true};
const RelayedMethod kBackup = {qel::sig::kExecuteUpdateBackup,
                               qel::wire::method::kExecuteUpdateBackup, true};
const RelayedMethod kUpdate = {qel::sig::kExecuteUpdate, qel::wire::method::kExecuteUpdate, false};

}  // namespace

namespace {

// The frame of every relayed entry point around TransUmMessage.
HRESULT Relay(CSomIf& som, const std::string& traceName, const RelayedMethod& method,
              const std::string& className, IWbemClassObject* inParams,
              IWbemClassObject** outParams) {
    if (method.traceClass) {
        qel::TraceEnter(traceName, method.signature, className);
    } else {
        qel::TraceEnter(traceName, method.signature);
    }
    int rc = som.TransUmMessage(className, method.wireMethod, inParams, outParams);
    qel::TraceLeave(traceName, method.signature, rc, qel::RcForm::kSigned32);
    return qel::ZeroExtend(rc);
}

}  // namespace

HRESULT CSomIf::Reboot(std::string className, IWbemClassObject* in, IWbemClassObject** out) {
    return Relay(*this, TraceName(), kReboot, className, in, out);
}
HRESULT CSomIf::ExecuteUpdateApplyCheck(std::string className, IWbemClassObject* in,
                                        IWbemClassObject** out) {
    return Relay(*this, TraceName(), kApplyCheck, className, in, out);
}
HRESULT CSomIf::RegisterUpdateModule(std::string className, IWbemClassObject* in,
                                     IWbemClassObject** out) {
    return Relay(*this, TraceName(), kRegister, className, in, out);
}
HRESULT CSomIf::SetDependencyInfo(std::string className, IWbemClassObject* in,
                                  IWbemClassObject** out) {
    return Relay(*this, TraceName(), kDependency, className, in, out);
}
HRESULT CSomIf::ReleaseOperatingAuthority(std::string className, IWbemClassObject* in,
                                          IWbemClassObject** out) {
    return Relay(*this, TraceName(), kRelease, className, in, out);
}
HRESULT CSomIf::GetOperationAuthority(std::string className, IWbemClassObject* in,
                                      IWbemClassObject** out) {
    return Relay(*this, TraceName(), kAuthority, className, in, out);
}
HRESULT CSomIf::ExecuteUpdateRestore(std::string className, IWbemClassObject* in,
                                     IWbemClassObject** out) {
    return Relay(*this, TraceName(), kRestore, className, in, out);
}
HRESULT CSomIf::ExecutePreUpdate(std::string className, IWbemClassObject* in,
                                 IWbemClassObject** out) {
    return Relay(*this, TraceName(), kPreUpdate, className, in, out);
}
HRESULT CSomIf::ExecuteUpdateBackup(std::string className, IWbemClassObject* in,
                                    IWbemClassObject** out) {
    return Relay(*this, TraceName(), kBackup, className, in, out);
}
HRESULT CSomIf::ExecuteUpdate(std::string className, IWbemClassObject* in, IWbemClassObject** out) {
    return Relay(*this, TraceName(), kUpdate, className, in, out);
}
