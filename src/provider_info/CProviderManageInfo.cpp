// CProviderManageInfo: construction and destruction.
#include "CProviderManageInfo.h"

#include "codec/trace_setup.h"
#include "common/trace.h"
#include "provider_signatures.h"

CProviderManageInfo::CProviderManageInfo(std::string traceName)
    : CSerializedMsg(std::move(traceName)), m_isDevice(false) {
    qel::InitializeTraceOnce(this->traceName());
    qel::TraceEnter(this->traceName(), qel::sig::kProviderManageInfoConstructor);
    qel::TraceLeave(this->traceName(), qel::sig::kProviderManageInfoConstructor);
}

CProviderManageInfo::~CProviderManageInfo() {
    qel::TraceEnter(this->traceName(), qel::sig::kProviderManageInfoDestructor);
    qel::TraceLeave(this->traceName(), qel::sig::kProviderManageInfoDestructor);
}
