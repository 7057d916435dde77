// CProviderManageInfo: construction and destruction.
#include "CProviderManageInfo.h"

#include "CTraceUtility.h"
#include "common/trace.h"
#include "provider_signatures.h"

CProviderManageInfo::CProviderManageInfo(std::string traceName)
    : CSerializedMsg(traceName), m_traceName(std::move(traceName)), m_isDevice(false) {
    CTraceUtility::Initialize(m_traceName, static_cast<unsigned int>(-1));
    qel::TraceEnter(m_traceName, qel::sig::kProviderManageInfoConstructor);
    qel::TraceLeave(m_traceName, qel::sig::kProviderManageInfoConstructor);
}

CProviderManageInfo::~CProviderManageInfo() {
    qel::TraceEnter(m_traceName, qel::sig::kProviderManageInfoDestructor);
    qel::TraceLeave(m_traceName, qel::sig::kProviderManageInfoDestructor);
}
