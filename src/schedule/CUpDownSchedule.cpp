// CUpDownSchedule: construction and destruction.
#include "CUpDownSchedule.h"

#include "codec/trace_setup.h"
#include "common/trace.h"
#include "schedule_signatures.h"

CUpDownSchedule::CUpDownSchedule(std::string traceName)
    : CSerializedMsg(traceName), m_traceName(std::move(traceName)) {
    qel::InitializeTraceOnce(m_traceName);
    qel::TraceEnter(m_traceName, qel::sig::kUpDownScheduleConstructor);
    qel::TraceLeave(m_traceName, qel::sig::kUpDownScheduleConstructor);
}

CUpDownSchedule::~CUpDownSchedule() {
    qel::TraceEnter(m_traceName, qel::sig::kUpDownScheduleDestructor);
    qel::TraceLeave(m_traceName, qel::sig::kUpDownScheduleDestructor);
}
