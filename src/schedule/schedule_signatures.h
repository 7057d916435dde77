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

constexpr const char kString2RegisterUpdateModule[] =
    "void CUpDownSchedule::String2RegisterUpdateModule(char*, IWbemClassObject&)";
constexpr const char kSectionString2IWbem[] =
    "virtual void CUpDownSchedule::String2IWbem(char*, IWbemClassObject&)";
constexpr const char kToObject2[] = "void CUpDownSchedule::toObject2(char*, IWbemClassObject&)";
constexpr const char kToObjectInput[] = "void CUpDownSchedule::toObject(char*, IWbemClassObject&)";
constexpr const char kSetUpdateAttrInfo[] =
    "char* CUpDownSchedule::SetUpdateAttrInfo(char*, IWbemClassObject*)";
constexpr const char kSetUpdateLinkInfo[] =
    "char* CUpDownSchedule::SetUpdateLinkInfo(char*, IWbemClassObject*)";
constexpr const char kSetUpdateFileInfo[] =
    "char* CUpDownSchedule::SetUpdateFileInfo(char*, IWbemClassObject*)";
constexpr const char kSetUpdateDepoInfo[] =
    "char* CUpDownSchedule::SetUpdateDepoInfo(char*, IWbemClassObject*)";
constexpr const char kSetUpdateShareInfo[] =
    "char* CUpDownSchedule::SetUpdateShareInfo(char*, std::vector<IWbemClassObject*, "
    "std::allocator<IWbemClassObject*> >*)";
constexpr const char kSetUpdateSimuInfo[] =
    "char* CUpDownSchedule::SetUpdateSimuInfo(char*, std::vector<IWbemClassObject*, "
    "std::allocator<IWbemClassObject*> >*)";

}  // namespace sig
}  // namespace qel

#endif  // QEL_SRC_SCHEDULE_SCHEDULE_SIGNATURES_H
