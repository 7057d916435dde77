// CVersionUpLog: construction and destruction.
#include "CVersionUpLog.h"

#include "CTraceUtility.h"

CVersionUpLog::CVersionUpLog(std::string traceName)
    : CSerializedMsg(traceName), m_traceName(std::move(traceName)) {
    CTraceUtility::Initialize(m_traceName, static_cast<unsigned int>(-1));
}

CVersionUpLog::~CVersionUpLog() = default;
