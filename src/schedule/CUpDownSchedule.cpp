// CUpDownSchedule: construction and destruction.
#include "CUpDownSchedule.h"

#include "CTraceUtility.h"
#include "common/trace.h"
#include "schedule_signatures.h"

CUpDownSchedule::CUpDownSchedule(std::string traceName) : CSerializedMsg(std::move(traceName)) {
    CTraceUtility::Initialize(this->traceName(), 0xFFFFFFFFu);
    qel::TraceEnter(this->traceName(), qel::sig::kUpDownScheduleConstructor);
    qel::TraceLeave(this->traceName(), qel::sig::kUpDownScheduleConstructor);
}

CUpDownSchedule::~CUpDownSchedule() {
    qel::TraceEnter(this->traceName(), qel::sig::kUpDownScheduleDestructor);
    qel::TraceLeave(this->traceName(), qel::sig::kUpDownScheduleDestructor);
}
