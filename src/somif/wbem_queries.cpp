// CSomIf: the WBEM query entry points that decode structured replies.
#include "CProviderManageInfo.h"
#include "CSerializedMsg.h"
#include "CSomIf.h"
#include "CUpDownSchedule.h"
#include "common/trace.h"
#include "exchange.h"
#include "somif_signatures.h"
#include "wire.h"

namespace {

// The frame of the three: exchange, then decode into *outParams only when
// the result is not negative. `decode` gets the reply body and the object.
template <class Decode>
HRESULT Query(CSomIf& som, const std::string& traceName, const char* signature, const char* method,
              const std::string& className, IWbemClassObject* inParams,
              IWbemClassObject** outParams, bool sendInParams, Decode decode) {
    qel::TraceEnter(traceName, signature, className);
    std::string request;
    if (sendInParams && inParams != nullptr) {
        CSerializedMsg codec(traceName);
        codec.IWbem2String(*inParams, request);
    }
    const qel::somif::Exchanged exchanged =
        qel::somif::Exchange(som, traceName, method, className, request);
    const int rc = exchanged.rc;
    if (!qel::wire::IsNegative(rc)) {
        if (*outParams == nullptr)
            *outParams = new IWbemClassObject;
        decode(exchanged.reply.body, **outParams);
    }
    qel::TraceLeave(traceName, signature, rc, qel::RcForm::kSigned32);
    return qel::ZeroExtend(rc);
}

}  // namespace

HRESULT CSomIf::CheckUpdateModuleConformity(std::string className, IWbemClassObject* inParams,
                                            IWbemClassObject** outParams) {
    return Query(*this, TraceName(), qel::sig::kCheckUpdateModuleConformity,
                 qel::wire::method::kCheckUpdateModuleConformity, className, inParams, outParams,
                 true, [this](char* body, IWbemClassObject& out) {
                     CUpDownSchedule codec(TraceName());
                     codec.toObject2(body, out);
                 });
}

HRESULT CSomIf::GetProviderManageInfo(std::string className, IWbemClassObject* inParams,
                                      IWbemClassObject** outParams) {
    return Query(*this, TraceName(), qel::sig::kGetProviderManageInfoWbem,
                 qel::wire::method::kGetProviderManageInfo, className, inParams, outParams, false,
                 [this](char* body, IWbemClassObject& out) {
                     CProviderManageInfo codec(TraceName());
                     codec.toObject(body, out);
                 });
}

HRESULT CSomIf::GetUpdatePlans(std::string className, IWbemClassObject* inParams,
                               IWbemClassObject** outParams) {
    return Query(*this, TraceName(), qel::sig::kGetUpdatePlansWbem,
                 qel::wire::method::kGetUpdatePlans, className, inParams, outParams, true,
                 [this](char* body, IWbemClassObject& out) {
                     CUpDownSchedule codec(TraceName());
                     codec.String2UpdatePlans(body, out);
                 });
}
