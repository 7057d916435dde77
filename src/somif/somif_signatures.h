// Trace signatures of CSomIf's operations.
#ifndef QEL_SRC_SOMIF_SOMIF_SIGNATURES_H
#define QEL_SRC_SOMIF_SOMIF_SIGNATURES_H

namespace qel {
namespace sig {

constexpr const char kConstructor[] = "CSomIf::CSomIf(std::string)";
constexpr const char kDestructor[] = "virtual CSomIf::~CSomIf()";
constexpr const char kGetMsgHead[] =
    "std::string CSomIf::getMsgHead(std::string, const char*, uint32_t)";
constexpr const char kGetResult[] = "HRESULT CSomIf::getResult(int, const char*)";
constexpr const char kGetReturnValue[] = "HRESULT CSomIf::GetReturnValue(std::string)";

#define QEL_STRING_VECTOR                                                                  \
    "std::vector<std::basic_string<char, std::char_traits<char>, std::allocator<char> >, " \
    "std::allocator<std::basic_string<char, std::char_traits<char>, std::allocator<char> > > >&"
#define QEL_RELAY_ARGS "(std::string, IWbemClassObject*, IWbemClassObject**)"

// WBEM relay.
constexpr const char kExecMethod[] =
    "HRESULT CSomIf::ExecMethod(OLECHAR*, OLECHAR*, long int, IWbemContext*, IWbemClassObject*, "
    "IWbemClassObject**, IWbemCallResult**)";
constexpr const char kTransUmMessage[] =
    "int CSomIf::TransUmMessage(std::string, std::string, IWbemClassObject*, IWbemClassObject**)";
constexpr const char kReboot[] = "HRESULT CSomIf::Reboot" QEL_RELAY_ARGS;
constexpr const char kExecuteUpdateApplyCheck[] =
    "HRESULT CSomIf::ExecuteUpdateApplyCheck" QEL_RELAY_ARGS;
constexpr const char kRegisterUpdateModule[] =
    "HRESULT CSomIf::RegisterUpdateModule" QEL_RELAY_ARGS;
constexpr const char kSetDependencyInfo[] = "HRESULT CSomIf::SetDependencyInfo" QEL_RELAY_ARGS;
constexpr const char kReleaseOperatingAuthorityRelay[] =
    "HRESULT CSomIf::ReleaseOperatingAuthority" QEL_RELAY_ARGS;
constexpr const char kGetOperationAuthority[] =
    "HRESULT CSomIf::GetOperationAuthority" QEL_RELAY_ARGS;
constexpr const char kExecuteUpdateRestore[] =
    "HRESULT CSomIf::ExecuteUpdateRestore" QEL_RELAY_ARGS;
constexpr const char kExecutePreUpdate[] = "HRESULT CSomIf::ExecutePreUpdate" QEL_RELAY_ARGS;
constexpr const char kExecuteUpdateBackup[] = "HRESULT CSomIf::ExecuteUpdateBackup" QEL_RELAY_ARGS;
constexpr const char kExecuteUpdate[] = "HRESULT CSomIf::ExecuteUpdate" QEL_RELAY_ARGS;
constexpr const char kCheckUpdateModuleConformity[] =
    "HRESULT CSomIf::CheckUpdateModuleConformity" QEL_RELAY_ARGS;
constexpr const char kGetProviderManageInfoWbem[] =
    "HRESULT CSomIf::GetProviderManageInfo" QEL_RELAY_ARGS;
constexpr const char kGetUpdatePlansWbem[] = "HRESULT CSomIf::GetUpdatePlans" QEL_RELAY_ARGS;

// Provider-management queries.
constexpr const char kGetProviderManageInfoDev[] =
    "HRESULT CSomIf::GetProviderManageInfo(std::string, CVelmora_DevProviderManageInfo&)";
constexpr const char kGetProviderManageInfoTool[] =
    "HRESULT CSomIf::GetProviderManageInfo(std::string, CVelmora_ToolProviderManageInfo&)";
constexpr const char kRecvProviderManageInfoDev[] =
    "int CSomIf::RecvProviderManageInfo(size_t, CVelmora_DevProviderManageInfo&)";
constexpr const char kRecvProviderManageInfoTool[] =
    "int CSomIf::RecvProviderManageInfo(size_t, CVelmora_ToolProviderManageInfo&)";

// Update manager.
constexpr const char kSetUpdatePriority[] =
    "HRESULT CSomIf::SetUpdatePriority(std::string, const CVelmora_PriorityUpdateParam&)";
constexpr const char kSetAutoDownloadSetting[] =
    "HRESULT CSomIf::SetAutoDownloadSetting(const CVELMORA_DownloadSetting&, const "
    "CVELMORA_DownloadSchedule&)";
constexpr const char kSetAutoUpdateSetting[] =
    "HRESULT CSomIf::SetAutoUpdateSetting(const CVELMORA_UpdateSchedule&)";
constexpr const char kGetAutoDownloadSetting[] =
    "HRESULT CSomIf::GetAutoDownloadSetting(CVELMORA_DownloadSetting&, CVELMORA_DownloadSchedule&)";
constexpr const char kGetAutoUpdateSetting[] =
    "HRESULT CSomIf::GetAutoUpdateSetting(CVELMORA_UpdateSchedule&)";
constexpr const char kGetUpdatePlans[] =
    "HRESULT CSomIf::GetUpdatePlans(std::string, std::vector<CVELMORA_UpdatePlans, "
    "std::allocator<CVELMORA_UpdatePlans> >&)";
constexpr const char kGetUpdatePlansRollback[] =
    "HRESULT CSomIf::GetUpdatePlans(std::string, bool, std::vector<CVELMORA_UpdatePlans, "
    "std::allocator<CVELMORA_UpdatePlans> >&)";
constexpr const char kReleaseOperatingAuthority[] =
    "HRESULT CSomIf::ReleaseOperatingAuthority(std::string, std::string)";
constexpr const char kGetOperatingAuthority[] =
    "HRESULT CSomIf::GetOperatingAuthority(std::string, std::string)";
constexpr const char kExecuteReboot[] = "HRESULT CSomIf::ExecuteReboot()";
constexpr const char kRollbackAll[] = "HRESULT CSomIf::RollbackAll(LONG&)";
constexpr const char kUpdateAll[] = "HRESULT CSomIf::UpdateAll(LONG&)";
constexpr const char kDownloadAll[] =
    "HRESULT CSomIf::DownloadAll(const CVELMORA_DownloadSetting&)";

// Status, versions and logs.
constexpr const char kCollectQelVersion[] =
    "HRESULT CSomIf::CollectQelVersion(std::vector<CVELMORA_QelVersionInfo, "
    "std::allocator<CVELMORA_QelVersionInfo> >&)";
constexpr const char kCollectVersionUpLog[] =
    "HRESULT CSomIf::CollectVersionUpLog(std::vector<CVELMORA_VersionUpdateLog, "
    "std::allocator<CVELMORA_VersionUpdateLog> >&)";
constexpr const char kCollectDownloadLog[] =
    "HRESULT CSomIf::CollectDownloadLog(std::string, " QEL_STRING_VECTOR ")";
constexpr const char kCollectResultLog[] =
    "HRESULT CSomIf::CollectResultLog(std::string, " QEL_STRING_VECTOR ")";
constexpr const char kGetManagerLog[] =
    "HRESULT CSomIf::getManagerLog(const char*, const char*, " QEL_STRING_VECTOR ")";
constexpr const char kGetQELStatus[] = "HRESULT CSomIf::GetQELStatus(LONG&)";

// Alive monitor.
constexpr const char kAliveMonitorUpdateParameters[] =
    "HRESULT CSomIf::AliveMonitorUpdateParameters()";
constexpr const char kAliveMonitorClearParameters[] =
    "HRESULT CSomIf::AliveMonitorClearParameters()";
constexpr const char kAliveMonitorSetParameter[] =
    "HRESULT CSomIf::AliveMonitorSetParameter(std::string, std::string)";
constexpr const char kAliveMonitorGetParameter[] =
    "HRESULT CSomIf::AliveMonitorGetParameter(std::string, std::string&, uint&)";

#undef QEL_RELAY_ARGS
#undef QEL_STRING_VECTOR

}  // namespace sig
}  // namespace qel

#endif  // QEL_SRC_SOMIF_SOMIF_SIGNATURES_H
