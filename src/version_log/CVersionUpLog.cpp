// CVersionUpLog: construction and destruction.
#include "CVersionUpLog.h"

#include "codec/trace_setup.h"

CVersionUpLog::CVersionUpLog(std::string traceName) : CSerializedMsg(std::move(traceName)) {
    qel::InitializeTraceOnce(this->traceName());
}

CVersionUpLog::~CVersionUpLog() = default;
