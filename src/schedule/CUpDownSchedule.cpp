// CUpDownSchedule: construction and destruction.
#include "CUpDownSchedule.h"

#include "codec/trace_setup.h"
#include "common/trace.h"
#include "schedule_signatures.h"

CUpDownSchedule::CUpDownSchedule(std::string traceName) : CSerializedMsg(std::move(traceName)) {
    qel::InitializeTraceOnce(this->traceName());
    qel::TraceEnter(this->traceName(), qel::sig::kUpDownScheduleConstructor);
    qel::TraceLeave(this->traceName(), qel::sig::kUpDownScheduleConstructor);
}

CUpDownSchedule::~CUpDownSchedule() {
    qel::TraceEnter(this->traceName(), qel::sig::kUpDownScheduleDestructor);
    qel::TraceLeave(this->traceName(), qel::sig::kUpDownScheduleDestructor);
}
