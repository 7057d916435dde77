// CSomIf: the typed update-manager operations.
#include <memory>

#include "CSomIf.h"
#include "CUpDownSchedule.h"
#include "common/trace.h"
#include "exchange.h"
#include "list_exchange.h"
#include "somif_signatures.h"
#include "wire.h"

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
    qel::TraceEnter(TraceName(), qel::sig::kSetUpdatePriority);
    std::string body = ScheduleBody(
        TraceName(), [&](CUpDownSchedule& codec, std::string& out) { codec.toString(param, out); });
    int rc = TransMessage(qel::wire::method::kSetUpdatePriority, className, body);
    qel::TraceLeave(TraceName(), qel::sig::kSetUpdatePriority, rc, qel::RcForm::kWidenedUnsigned64);
    return qel::ZeroExtend(rc);
}

HRESULT CSomIf::SetAutoDownloadSetting(const CVELMORA_DownloadSetting& setting,
                                       const CVELMORA_DownloadSchedule& schedule) {
    qel::TraceEnter(TraceName(), qel::sig::kSetAutoDownloadSetting);
    std::string body = ScheduleBody(TraceName(), [&](CUpDownSchedule& codec, std::string& out) {
        codec.toString(setting, schedule, out);
    });
    int rc =
        TransMessage(qel::wire::method::kSetAutoDownloadSetting, qel::wire::kUpdateManager, body);
    qel::TraceLeave(TraceName(), qel::sig::kSetAutoDownloadSetting, rc,
                    qel::RcForm::kWidenedUnsigned64);
    return qel::ZeroExtend(rc);
}

HRESULT CSomIf::SetAutoUpdateSetting(const CVELMORA_UpdateSchedule& schedule) {
    qel::TraceEnter(TraceName(), qel::sig::kSetAutoUpdateSetting);
    std::string body = ScheduleBody(TraceName(), [&](CUpDownSchedule& codec, std::string& out) {
        codec.toString(schedule, out);
    });
    int rc =
        TransMessage(qel::wire::method::kSetAutoUpdateSetting, qel::wire::kUpdateManager, body);
    qel::TraceLeave(TraceName(), qel::sig::kSetAutoUpdateSetting, rc,
                    qel::RcForm::kWidenedUnsigned64);
    return qel::ZeroExtend(rc);
}

HRESULT CSomIf::DownloadAll(const CVELMORA_DownloadSetting& setting) {
    qel::TraceEnter(TraceName(), qel::sig::kDownloadAll);
    std::string body = ScheduleBody(TraceName(), [&](CUpDownSchedule& codec, std::string& out) {
        codec.toString(setting, out);
    });
    int rc = TransMessage(qel::wire::method::kDownloadAll, qel::wire::kUpdateManager, body);
    qel::TraceLeave(TraceName(), qel::sig::kDownloadAll, rc, qel::RcForm::kWidenedUnsigned64);
    return qel::ZeroExtend(rc);
}

HRESULT CSomIf::GetAutoDownloadSetting(CVELMORA_DownloadSetting& setting,
                                       CVELMORA_DownloadSchedule& schedule) {
    qel::TraceEnter(TraceName(), qel::sig::kGetAutoDownloadSetting);
    const qel::somif::Exchanged exchanged =
        qel::somif::Exchange(*this, TraceName(), qel::wire::method::kGetAutoDownloadSetting,
                             qel::wire::kUpdateManager, std::string());
    const int rc = exchanged.rc;
    if (!qel::wire::IsNegative(rc)) {
        CUpDownSchedule codec(TraceName());
        codec.toObject(exchanged.reply.body, schedule, setting);
    }
    qel::TraceLeave(TraceName(), qel::sig::kGetAutoDownloadSetting, rc, qel::RcForm::kSigned32);
    return qel::ZeroExtend(rc);
}

HRESULT CSomIf::GetAutoUpdateSetting(CVELMORA_UpdateSchedule& schedule) {
    qel::TraceEnter(TraceName(), qel::sig::kGetAutoUpdateSetting);
    const qel::somif::Exchanged exchanged =
        qel::somif::Exchange(*this, TraceName(), qel::wire::method::kGetAutoUpdateSetting,
                             qel::wire::kUpdateManager, std::string());
    const int rc = exchanged.rc;
    // Decoded whatever the result: "" when nothing came, what came when cut short.
    CUpDownSchedule codec(TraceName());
    codec.toObject(exchanged.reply.body, schedule);
    qel::TraceLeave(TraceName(), qel::sig::kGetAutoUpdateSetting, rc,
                    qel::RcForm::kWidenedUnsigned64);
    return qel::ZeroExtend(rc);
}

HRESULT CSomIf::GetUpdatePlans(std::string className, std::vector<CVELMORA_UpdatePlans>& plans) {
    qel::TraceEnter(TraceName(), qel::sig::kGetUpdatePlans);
    int rc = qel::somif::ExchangeSmallList(*this, TraceName(), qel::wire::method::kGetUpdatePlans,
                                           className, std::string(), plans);
    qel::TraceLeave(TraceName(), qel::sig::kGetUpdatePlans, rc, qel::RcForm::kSigned32);
    return qel::ZeroExtend(rc);
}

HRESULT CSomIf::GetUpdatePlans(std::string className, bool rollback,
                               std::vector<CVELMORA_UpdatePlans>& plans) {
    qel::TraceEnter(TraceName(), qel::sig::kGetUpdatePlansRollback);
    int rc = qel::somif::ExchangeSmallList(
        *this, TraceName(), qel::wire::method::kGetUpdatePlans, className,
        getBoolParam(qel::wire::param::kRollback, rollback), plans);
    qel::TraceLeave(TraceName(), qel::sig::kGetUpdatePlansRollback, rc, qel::RcForm::kSigned32);
    return qel::ZeroExtend(rc);
}

HRESULT CSomIf::ReleaseOperatingAuthority(std::string className, std::string appKey) {
    qel::TraceEnter(TraceName(), qel::sig::kReleaseOperatingAuthority);
    std::string body = getStrParam(appKey);
    int rc = TransMessage(qel::wire::method::kReleaseOperatingAuthority, className, body);
    qel::TraceLeave(TraceName(), qel::sig::kReleaseOperatingAuthority, rc, qel::RcForm::kSigned32);
    return qel::ZeroExtend(rc);
}

HRESULT CSomIf::GetOperatingAuthority(std::string className, std::string appKey) {
    qel::TraceEnter(TraceName(), qel::sig::kGetOperatingAuthority);
    std::string body = getStrParam(appKey);
    int rc = TransMessage(qel::wire::method::kGetOperatingAuthority, className, body);
    qel::TraceLeave(TraceName(), qel::sig::kGetOperatingAuthority, rc, qel::RcForm::kSigned32);
    return qel::ZeroExtend(rc);
}

HRESULT CSomIf::ExecuteReboot() {
    qel::TraceEnter(TraceName(), qel::sig::kExecuteReboot);
    int rc = TransMessage(qel::wire::method::kExecuteReboot, qel::wire::kUpdateManager, nullptr);
    qel::TraceLeave(TraceName(), qel::sig::kExecuteReboot, rc, qel::RcForm::kWidenedUnsigned64);
    return qel::ZeroExtend(rc);
}

namespace {

// A bulk run: the reboot kind from the whole reply when not negative.
int BulkRun(CSomIf& som, const std::string& traceName, const char* method, LONG& rebootKind) {
    const qel::somif::Exchanged exchanged =
        qel::somif::Exchange(som, traceName, method, qel::wire::kUpdateManager, std::string());
    if (!qel::wire::IsNegative(exchanged.rc))
        rebootKind = som.getRebootKind(exchanged.reply.text);
    return exchanged.rc;
}

}  // namespace

HRESULT CSomIf::RollbackAll(LONG& rebootKind) {
    qel::TraceEnter(TraceName(), qel::sig::kRollbackAll);
    int rc = BulkRun(*this, TraceName(), qel::wire::method::kRollbackAll, rebootKind);
    qel::TraceLeave(TraceName(), qel::sig::kRollbackAll, rc, qel::RcForm::kSigned32);
    return qel::ZeroExtend(rc);
}

HRESULT CSomIf::UpdateAll(LONG& rebootKind) {
    qel::TraceEnter(TraceName(), qel::sig::kUpdateAll);
    int rc = BulkRun(*this, TraceName(), qel::wire::method::kUpdateAll, rebootKind);
    qel::TraceLeave(TraceName(), qel::sig::kUpdateAll, rc, qel::RcForm::kSigned32);
    return qel::ZeroExtend(rc);
}
