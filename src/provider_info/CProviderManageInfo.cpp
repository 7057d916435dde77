// CProviderManageInfo: construction and destruction.
#include "CProviderManageInfo.h"

#include "CTraceUtility.h"
#include "common/trace.h"
#include "provider_signatures.h"

CProviderManageInfo::CProviderManageInfo(std::string traceName)
    : CSerializedMsg(std::move(traceName)), isDevice_(false) {
    CTraceUtility::Initialize(this->traceName(), 0xFFFFFFFFu);
    qel::TraceEnter(this->traceName(), qel::sig::kProviderManageInfoConstructor);
    qel::TraceLeave(this->traceName(), qel::sig::kProviderManageInfoConstructor);
}

CProviderManageInfo::~CProviderManageInfo() {
    qel::TraceEnter(this->traceName(), qel::sig::kProviderManageInfoDestructor);
    qel::TraceLeave(this->traceName(), qel::sig::kProviderManageInfoDestructor);
}
