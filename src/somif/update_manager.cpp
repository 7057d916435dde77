// CSomIf: the typed update-manager operations.
#include <memory>

#include "CSomIf.h"
#include "CUpDownSchedule.h"
#include "list_exchange.h"
#include "common/trace.h"
#include "somif_signatures.h"
#include "wire.h"

namespace {

const char kSetUpdatePriority[] = "SetUpdatePriority";
const char kSetAutoDownloadSetting[] = "SetAutoDownloadSetting";
const char kSetAutoUpdateSetting[] = "SetAutoUpdateSetting";
const char kGetAutoDownloadSetting[] = "GetAutoDownloadSetting";
const char kGetAutoUpdateSetting[] = "GetAutoUpdateSetting";
const char kGetUpdatePlans[] = "GetUpdatePlans";
const char kReleaseOperatingAuthority[] = "ReleaseOperatingAuthority";
const char kGetOperatingAuthority[] = "GetOperatingAuthority";
const char kExecuteReboot[] = "ExecuteReboot";
const char kRollbackAll[] = "RollbackAll";
const char kUpdateAll[] = "UpdateAll";
const char kDownloadAll[] = "DownloadAll";
const char kRollbackParam[] = "Rollback";

}  // namespace

namespace {

// A setter's body, written by a schedule codec that lives for this call.
template <class Write>
std::string ScheduleBody(const std::string& traceName, Write write) {
    std::string body;
    CUpDownSchedule codec(traceName);
    write(codec, body);
    return body;
}

}  // namespace

HRESULT CSomIf::SetUpdatePriority(std::string className,
                                  const CVelmora_PriorityUpdateParam& param) {
    qel::TraceEnter(m_traceName, qel::sig::kSetUpdatePriority);
    std::string body = ScheduleBody(
        m_traceName, [&](CUpDownSchedule& codec, std::string& out) { codec.toString(param, out); });
    int rc = TransMessage(kSetUpdatePriority, className, body);
    qel::TraceLeave(m_traceName, qel::sig::kSetUpdatePriority, rc, qel::RcForm::kWidenedUnsigned64);
    return qel::ZeroExtend(rc);
}

HRESULT CSomIf::SetAutoDownloadSetting(const CVELMORA_DownloadSetting& setting,
                                       const CVELMORA_DownloadSchedule& schedule) {
    qel::TraceEnter(m_traceName, qel::sig::kSetAutoDownloadSetting);
    std::string body = ScheduleBody(m_traceName, [&](CUpDownSchedule& codec, std::string& out) {
        codec.toString(setting, schedule, out);
    });
    int rc = TransMessage(kSetAutoDownloadSetting, qel::wire::kUpdateManager, body);
    qel::TraceLeave(m_traceName, qel::sig::kSetAutoDownloadSetting, rc,
                    qel::RcForm::kWidenedUnsigned64);
    return qel::ZeroExtend(rc);
}

HRESULT CSomIf::SetAutoUpdateSetting(const CVELMORA_UpdateSchedule& schedule) {
    qel::TraceEnter(m_traceName, qel::sig::kSetAutoUpdateSetting);
    std::string body = ScheduleBody(m_traceName, [&](CUpDownSchedule& codec, std::string& out) {
        codec.toString(schedule, out);
    });
    int rc = TransMessage(kSetAutoUpdateSetting, qel::wire::kUpdateManager, body);
    qel::TraceLeave(m_traceName, qel::sig::kSetAutoUpdateSetting, rc,
                    qel::RcForm::kWidenedUnsigned64);
    return qel::ZeroExtend(rc);
}

HRESULT CSomIf::DownloadAll(const CVELMORA_DownloadSetting& setting) {
    qel::TraceEnter(m_traceName, qel::sig::kDownloadAll);
    std::string body = ScheduleBody(m_traceName, [&](CUpDownSchedule& codec, std::string& out) {
        codec.toString(setting, out);
    });
    int rc = TransMessage(kDownloadAll, qel::wire::kUpdateManager, body);
    qel::TraceLeave(m_traceName, qel::sig::kDownloadAll, rc, qel::RcForm::kWidenedUnsigned64);
    return qel::ZeroExtend(rc);
}

HRESULT CSomIf::GetAutoDownloadSetting(CVELMORA_DownloadSetting& setting,
                                       CVELMORA_DownloadSchedule& schedule) {
    qel::TraceEnter(m_traceName, qel::sig::kGetAutoDownloadSetting);
    std::string reply;
    int rc = TransMessage(kGetAutoDownloadSetting, qel::wire::kUpdateManager, reply);
    if (!qel::wire::IsNegative(rc)) {
        CUpDownSchedule codec(m_traceName);
        codec.toObject(&reply[0] + getSpecificPos(reply), schedule, setting);
    }
    qel::TraceLeave(m_traceName, qel::sig::kGetAutoDownloadSetting, rc, qel::RcForm::kSigned32);
    return qel::ZeroExtend(rc);
}

HRESULT CSomIf::GetAutoUpdateSetting(CVELMORA_UpdateSchedule& schedule) {
    qel::TraceEnter(m_traceName, qel::sig::kGetAutoUpdateSetting);
    std::string reply;
    int rc = TransMessage(kGetAutoUpdateSetting, qel::wire::kUpdateManager, reply);
    // Decoded whatever the result; after a failed exchange the reply is "".
    CUpDownSchedule codec(m_traceName);
    codec.toObject(&reply[0] + getSpecificPos(reply), schedule);
    qel::TraceLeave(m_traceName, qel::sig::kGetAutoUpdateSetting, rc,
                    qel::RcForm::kWidenedUnsigned64);
    return qel::ZeroExtend(rc);
}

HRESULT CSomIf::GetUpdatePlans(std::string className, std::vector<CVELMORA_UpdatePlans>& plans) {
    qel::TraceEnter(m_traceName, qel::sig::kGetUpdatePlans);
    int rc = qel::ExchangeSmallList(*this, m_traceName, kGetUpdatePlans, className, std::string(),
                                    plans);
    qel::TraceLeave(m_traceName, qel::sig::kGetUpdatePlans, rc, qel::RcForm::kSigned32);
    return qel::ZeroExtend(rc);
}

HRESULT CSomIf::GetUpdatePlans(std::string className, bool rollback,
                               std::vector<CVELMORA_UpdatePlans>& plans) {
    qel::TraceEnter(m_traceName, qel::sig::kGetUpdatePlansRollback);
    int rc = qel::ExchangeSmallList(*this, m_traceName, kGetUpdatePlans, className,
                                    getBoolParam(kRollbackParam, rollback), plans);
    qel::TraceLeave(m_traceName, qel::sig::kGetUpdatePlansRollback, rc, qel::RcForm::kSigned32);
    return qel::ZeroExtend(rc);
}

HRESULT CSomIf::ReleaseOperatingAuthority(std::string className, std::string appKey) {
    qel::TraceEnter(m_traceName, qel::sig::kReleaseOperatingAuthority);
    std::string body = getStrParam(appKey);
    int rc = TransMessage(kReleaseOperatingAuthority, className, body);
    qel::TraceLeave(m_traceName, qel::sig::kReleaseOperatingAuthority, rc, qel::RcForm::kSigned32);
    return qel::ZeroExtend(rc);
}

HRESULT CSomIf::GetOperatingAuthority(std::string className, std::string appKey) {
    qel::TraceEnter(m_traceName, qel::sig::kGetOperatingAuthority);
    std::string body = getStrParam(appKey);
    int rc = TransMessage(kGetOperatingAuthority, className, body);
    qel::TraceLeave(m_traceName, qel::sig::kGetOperatingAuthority, rc, qel::RcForm::kSigned32);
    return qel::ZeroExtend(rc);
}

HRESULT CSomIf::ExecuteReboot() {
    qel::TraceEnter(m_traceName, qel::sig::kExecuteReboot);
    std::string reply;
    int rc = TransMessage(kExecuteReboot, qel::wire::kUpdateManager, reply);
    qel::TraceLeave(m_traceName, qel::sig::kExecuteReboot, rc, qel::RcForm::kWidenedUnsigned64);
    return qel::ZeroExtend(rc);
}

namespace {

// A bulk run: the reboot kind from the whole reply when not negative.
int BulkRun(CSomIf& som, const char* method, LONG& rebootKind) {
    std::string reply;
    int rc = som.TransMessage(method, qel::wire::kUpdateManager, reply);
    if (!qel::wire::IsNegative(rc))
        rebootKind = som.getRebootKind(reply.c_str());
    return rc;
}

}  // namespace

HRESULT CSomIf::RollbackAll(LONG& rebootKind) {
    qel::TraceEnter(m_traceName, qel::sig::kRollbackAll);
    int rc = BulkRun(*this, kRollbackAll, rebootKind);
    qel::TraceLeave(m_traceName, qel::sig::kRollbackAll, rc, qel::RcForm::kSigned32);
    return qel::ZeroExtend(rc);
}

HRESULT CSomIf::UpdateAll(LONG& rebootKind) {
    qel::TraceEnter(m_traceName, qel::sig::kUpdateAll);
    int rc = BulkRun(*this, kUpdateAll, rebootKind);
    qel::TraceLeave(m_traceName, qel::sig::kUpdateAll, rc, qel::RcForm::kSigned32);
    return qel::ZeroExtend(rc);
}
