// Trace signatures of CUpDownSchedule.
#ifndef QEL_SRC_SCHEDULE_SCHEDULE_SIGNATURES_H
#define QEL_SRC_SCHEDULE_SCHEDULE_SIGNATURES_H

namespace qel {
namespace sig {

constexpr const char kUpDownScheduleConstructor[] = "CUpDownSchedule::CUpDownSchedule(std::string)";
constexpr const char kUpDownScheduleDestructor[] = "virtual CUpDownSchedule::~CUpDownSchedule()";

constexpr const char kPriorityWriter[] =
    "void CUpDownSchedule::toString(const CVelmora_PriorityUpdateParam&, std::string&)";
constexpr const char kUpdateScheduleWriter[] =
    "void CUpDownSchedule::toString(const CVELMORA_UpdateSchedule&, std::string&)";
constexpr const char kDownloadSettingWriter[] =
    "void CUpDownSchedule::toString(const CVELMORA_DownloadSetting&, std::string&)";
constexpr const char kCombinedDownloadWriter[] =
    "void CUpDownSchedule::toString(const CVELMORA_DownloadSetting&, const "
    "CVELMORA_DownloadSchedule&, std::string&)";
constexpr const char kPriorityReader[] =
    "void CUpDownSchedule::toObject(char*, CVelmora_PriorityUpdateParam&)";
constexpr const char kUpdateScheduleReader[] =
    "void CUpDownSchedule::toObject(char*, CVELMORA_UpdateSchedule&)";
constexpr const char kCombinedDownloadReader[] =
    "void CUpDownSchedule::toObject(char*, CVELMORA_DownloadSchedule&, CVELMORA_DownloadSetting&)";

}  // namespace sig
}  // namespace qel

#endif  // QEL_SRC_SCHEDULE_SCHEDULE_SIGNATURES_H
