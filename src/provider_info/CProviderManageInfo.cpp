// CProviderManageInfo: construction and destruction.
#include "CProviderManageInfo.h"

#include "codec/trace_setup.h"
#include "common/trace.h"
#include "provider_signatures.h"

CProviderManageInfo::CProviderManageInfo(std::string traceName)
    : CSerializedMsg(traceName), m_traceName(std::move(traceName)), m_isDevice(false) {
    qel::InitializeTraceOnce(m_traceName);
    qel::TraceEnter(m_traceName, qel::sig::kProviderManageInfoConstructor);
    qel::TraceLeave(m_traceName, qel::sig::kProviderManageInfoConstructor);
}

CProviderManageInfo::~CProviderManageInfo() {
    qel::TraceEnter(m_traceName, qel::sig::kProviderManageInfoDestructor);
    qel::TraceLeave(m_traceName, qel::sig::kProviderManageInfoDestructor);
}
