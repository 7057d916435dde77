// Trace signatures of CProviderManageInfo.
#ifndef QEL_SRC_PROVIDER_INFO_PROVIDER_SIGNATURES_H
#define QEL_SRC_PROVIDER_INFO_PROVIDER_SIGNATURES_H

namespace qel {
namespace sig {

constexpr const char kProviderManageInfoConstructor[] =
    "CProviderManageInfo::CProviderManageInfo(std::string)";
constexpr const char kProviderManageInfoDestructor[] =
    "virtual CProviderManageInfo::~CProviderManageInfo()";
constexpr const char kToObjectDev[] =
    "void CProviderManageInfo::toObject(char*, CVelmora_DevProviderManageInfo&)";
constexpr const char kToObjectTool[] =
    "void CProviderManageInfo::toObject(char*, CVelmora_ToolProviderManageInfo&)";
constexpr const char kSetManageInfoDev[] =
    "char* CProviderManageInfo::setManageInfo(char*, CVelmora_DevProviderManageInfo&)";
constexpr const char kSetManageInfoTool[] =
    "char* CProviderManageInfo::setManageInfo(char*, CVelmora_ToolProviderManageInfo&)";
constexpr const char kToObjectTree[] =
    "void CProviderManageInfo::toObject(char*, IWbemClassObject&)";
constexpr const char kLinkAppElementEnter[] = "[enter] setLinkAppInfo";
constexpr const char kLinkAppElementLeave[] = "[leave] setLinkAppInfo";

}  // namespace sig
}  // namespace qel

#endif  // QEL_SRC_PROVIDER_INFO_PROVIDER_SIGNATURES_H
