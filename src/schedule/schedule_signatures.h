// Trace signatures of CUpDownSchedule.
#ifndef QEL_SRC_SCHEDULE_SCHEDULE_SIGNATURES_H
#define QEL_SRC_SCHEDULE_SCHEDULE_SIGNATURES_H

namespace qel {
namespace sig {

constexpr const char kUpDownScheduleConstructor[] = "CUpDownSchedule::CUpDownSchedule(std::string)";
constexpr const char kUpDownScheduleDestructor[] = "virtual CUpDownSchedule::~CUpDownSchedule()";

}  // namespace sig
}  // namespace qel

#endif  // QEL_SRC_SCHEDULE_SCHEDULE_SIGNATURES_H
