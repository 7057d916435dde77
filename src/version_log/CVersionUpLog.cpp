// CVersionUpLog: construction and destruction.
#include "CVersionUpLog.h"

#include "CTraceUtility.h"

CVersionUpLog::CVersionUpLog(std::string traceName) : CSerializedMsg(std::move(traceName)) {
    CTraceUtility::Initialize(this->traceName(), 0xFFFFFFFFu);
}

CVersionUpLog::~CVersionUpLog() = default;
