// CSomIf: the WBEM method relay.
#include "CIWbemUtil.h"
#include "CSerializedMsg.h"
#include "CSomIf.h"
#include "common/trace.h"
#include "somif_signatures.h"
#include "wire.h"

namespace {

// The setter's answer that turns TransUmMessage's result into success.
const HRESULT kReturnValueTakenAsSuccess = 0x80041002L;

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
    qel::TraceEnter(m_traceName, qel::sig::kExecMethod);
    if (className == nullptr || methodName == nullptr)
        return -1;
    std::string body;
    CSerializedMsg codec(m_traceName);
    if (inParams != nullptr)
        codec.IWbem2String(*inParams, body);
    EnsureOutput(outParams);
    int rc = TransMessage(methodName, className, body);  // body becomes the reply
    if (!qel::wire::IsTransportFamily(rc)) {
        CIWbemUtil::setReturnValueToIWbemClassObject(*outParams, SignWidened(rc));
        rc = 0;
    }
    // Items of the reply's body (a "ReturnValue" among them) stand on top.
    const unsigned int pos = getSpecificPos(body);
    codec.String2IWbem(&body[0] + pos, **outParams);
    qel::TraceLeave(m_traceName, qel::sig::kExecMethod, rc, qel::RcForm::kSigned32);
    return qel::ZeroExtend(rc);
}

int CSomIf::TransUmMessage(std::string className, std::string methodName,
                           IWbemClassObject* inParams, IWbemClassObject** outParams) {
    qel::TraceEnter(m_traceName, qel::sig::kTransUmMessage, className + " " + methodName);
    std::string body;
    CSerializedMsg codec(m_traceName);
    if (inParams != nullptr)
        codec.IWbem2String(*inParams, body);
    EnsureOutput(outParams);
    int rc = TransMessage(methodName.c_str(), className, body);
    if (!qel::wire::IsTransportFamily(rc)) {
        HRESULT set = CIWbemUtil::setReturnValueToIWbemClassObject(*outParams, SignWidened(rc));
        if (set == kReturnValueTakenAsSuccess)
            rc = 0;
    }
    qel::TraceLeave(m_traceName, qel::sig::kTransUmMessage, rc, qel::RcForm::kSigned32);
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

const RelayedMethod kReboot = {qel::sig::kReboot, "Reboot", true};
const RelayedMethod kApplyCheck = {qel::sig::kExecuteUpdateApplyCheck, "ExecuteUpdateApplyCheck",
                                   true};
const RelayedMethod kRegister = {qel::sig::kRegisterUpdateModule, "RegisterUpdateModule", true};
const RelayedMethod kDependency = {qel::sig::kSetDependencyInfo, "SetDependencyInfo", true};
const RelayedMethod kRelease = {qel::sig::kReleaseOperatingAuthorityRelay,
                                "ReleaseOperatingAuthority", true};
const RelayedMethod kAuthority = {qel::sig::kGetOperationAuthority, "GetOperatingAuthority", true};
const RelayedMethod kRestore = {qel::sig::kExecuteUpdateRestore, "ExecuteUpdateRestore", true};
const RelayedMethod kPreUpdate = {qel::sig::kExecutePreUpdate, "ExecutePreUpdate", true};
const RelayedMethod kBackup = {qel::sig::kExecuteUpdateBackup, "ExecuteUpdateBackup", true};
const RelayedMethod kUpdate = {qel::sig::kExecuteUpdate, "ExecuteUpdate", false};

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
    return Relay(*this, m_traceName, kReboot, className, in, out);
}
HRESULT CSomIf::ExecuteUpdateApplyCheck(std::string className, IWbemClassObject* in,
                                        IWbemClassObject** out) {
    return Relay(*this, m_traceName, kApplyCheck, className, in, out);
}
HRESULT CSomIf::RegisterUpdateModule(std::string className, IWbemClassObject* in,
                                     IWbemClassObject** out) {
    return Relay(*this, m_traceName, kRegister, className, in, out);
}
HRESULT CSomIf::SetDependencyInfo(std::string className, IWbemClassObject* in,
                                  IWbemClassObject** out) {
    return Relay(*this, m_traceName, kDependency, className, in, out);
}
HRESULT CSomIf::ReleaseOperatingAuthority(std::string className, IWbemClassObject* in,
                                          IWbemClassObject** out) {
    return Relay(*this, m_traceName, kRelease, className, in, out);
}
HRESULT CSomIf::GetOperationAuthority(std::string className, IWbemClassObject* in,
                                      IWbemClassObject** out) {
    return Relay(*this, m_traceName, kAuthority, className, in, out);
}
HRESULT CSomIf::ExecuteUpdateRestore(std::string className, IWbemClassObject* in,
                                     IWbemClassObject** out) {
    return Relay(*this, m_traceName, kRestore, className, in, out);
}
HRESULT CSomIf::ExecutePreUpdate(std::string className, IWbemClassObject* in,
                                 IWbemClassObject** out) {
    return Relay(*this, m_traceName, kPreUpdate, className, in, out);
}
HRESULT CSomIf::ExecuteUpdateBackup(std::string className, IWbemClassObject* in,
                                    IWbemClassObject** out) {
    return Relay(*this, m_traceName, kBackup, className, in, out);
}
HRESULT CSomIf::ExecuteUpdate(std::string className, IWbemClassObject* in, IWbemClassObject** out) {
    return Relay(*this, m_traceName, kUpdate, className, in, out);
}
