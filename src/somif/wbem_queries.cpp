// CSomIf: the WBEM query entry points that decode structured replies.
#include "CProviderManageInfo.h"
#include "CSerializedMsg.h"
#include "CSomIf.h"
#include "CUpDownSchedule.h"
#include "common/trace.h"
#include "somif_signatures.h"
#include "wire.h"

namespace {

const char kCheckUpdateModuleConformity[] = "CheckUpdateModuleConformity";
const char kGetProviderManageInfo[] = "GetProviderManageInfo";
const char kGetUpdatePlans[] = "GetUpdatePlans";

// The frame of the three: exchange, then decode into *outParams only when
// the result is not negative. `decode` gets the reply body and the object.
template <class Decode>
HRESULT Query(CSomIf& som, const std::string& traceName, const char* signature, const char* method,
              const std::string& className, IWbemClassObject* inParams,
              IWbemClassObject** outParams, bool sendInParams, Decode decode) {
    qel::TraceEnter(traceName, signature, className);
    std::string reply;
    if (sendInParams && inParams != nullptr) {
        CSerializedMsg codec(traceName);
        codec.IWbem2String(*inParams, reply);
    }
    int rc = som.TransMessage(method, className, reply);
    if (!qel::wire::IsNegative(rc)) {
        if (*outParams == nullptr)
            *outParams = new IWbemClassObject;
        decode(&reply[0] + som.getSpecificPos(reply), **outParams);
    }
    qel::TraceLeave(traceName, signature, rc, qel::RcForm::kSigned32);
    return qel::ZeroExtend(rc);
}

}  // namespace

HRESULT CSomIf::CheckUpdateModuleConformity(std::string className, IWbemClassObject* inParams,
                                            IWbemClassObject** outParams) {
    return Query(*this, m_traceName, qel::sig::kCheckUpdateModuleConformity,
                 kCheckUpdateModuleConformity, className, inParams, outParams, true,
                 [this](char* body, IWbemClassObject& out) {
                     CUpDownSchedule codec(m_traceName);
                     codec.toObject2(body, out);
                 });
}

HRESULT CSomIf::GetProviderManageInfo(std::string className, IWbemClassObject* inParams,
                                      IWbemClassObject** outParams) {
    return Query(*this, m_traceName, qel::sig::kGetProviderManageInfoWbem, kGetProviderManageInfo,
                 className, inParams, outParams, false, [this](char* body, IWbemClassObject& out) {
                     CProviderManageInfo codec(m_traceName);
                     codec.toObject(body, out);
                 });
}

HRESULT CSomIf::GetUpdatePlans(std::string className, IWbemClassObject* inParams,
                               IWbemClassObject** outParams) {
    return Query(*this, m_traceName, qel::sig::kGetUpdatePlansWbem, kGetUpdatePlans, className,
                 inParams, outParams, true, [this](char* body, IWbemClassObject& out) {
                     CUpDownSchedule codec(m_traceName);
                     codec.String2UpdatePlans(body, out);
                 });
}
