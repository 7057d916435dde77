// CUpDownSchedule: construction and destruction.
#include "CUpDownSchedule.h"

#include "CTraceUtility.h"
#include "common/trace.h"
#include "schedule_signatures.h"

CUpDownSchedule::CUpDownSchedule(std::string traceName)
    : CSerializedMsg(traceName), m_traceName(std::move(traceName)) {
    CTraceUtility::Initialize(m_traceName, 0xFFFFFFFFu);
    qel::TraceEnter(m_traceName, qel::sig::kUpDownScheduleConstructor);
    qel::TraceLeave(m_traceName, qel::sig::kUpDownScheduleConstructor);
}

CUpDownSchedule::~CUpDownSchedule() {
    qel::TraceEnter(m_traceName, qel::sig::kUpDownScheduleDestructor);
    qel::TraceLeave(m_traceName, qel::sig::kUpDownScheduleDestructor);
}
