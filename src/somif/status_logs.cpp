// CSomIf: status, version lists and logs.
#include <cstring>

#include "CFileUtility.h"
#include "CIniFileReader.h"
#include "CSerializedMsg.h"
#include "CSomIf.h"
#include "CTraceUtility.h"
#include "CVersionUpLog.h"
#include "common/trace.h"
#include "exchange.h"
#include "list_exchange.h"
#include "somif_signatures.h"
#include "wire.h"

namespace {

// The log results are handed back reduced to 32 bits when negative.
HRESULT ReduceNegative(HRESULT result) {
    return result < 0 ? qel::ZeroExtend(result) : result;
}

}  // namespace

HRESULT CSomIf::CollectQelVersion(std::vector<CVELMORA_QelVersionInfo>& versions) {
    qel::TraceEnter(TraceName(), qel::sig::kCollectQelVersion);
    int rc =
        qel::somif::ExchangeSmallList(*this, TraceName(), qel::wire::method::kCollectQelVersion,
                                      qel::wire::kQelVersion, std::string(), versions);
    qel::TraceLeave(TraceName(), qel::sig::kCollectQelVersion, rc, qel::RcForm::kSigned32);
    return qel::ZeroExtend(rc);
}

HRESULT CSomIf::CollectVersionUpLog(std::vector<CVELMORA_VersionUpdateLog>& logs) {
    qel::TraceEnter(TraceName(), qel::sig::kCollectVersionUpLog);
    const qel::somif::Exchanged exchanged =
        qel::somif::Exchange(*this, TraceName(), qel::wire::method::kCollectVersionUpLog,
                             qel::wire::kLogManager, std::string());
    const int rc = exchanged.rc;
    if (!qel::wire::IsNegative(rc)) {
        CVersionUpLog codec(TraceName());
        codec.toObject(exchanged.reply.body, logs);
    }
    qel::TraceLeave(TraceName(), qel::sig::kCollectVersionUpLog, rc, qel::RcForm::kSigned32);
    return qel::ZeroExtend(rc);
}

HRESULT CSomIf::getManagerLog(const char* method, const char* body,
                              std::vector<std::string>& lines) {
    qel::TraceEnter(TraceName(), qel::sig::kGetManagerLog);
    const qel::somif::Reply reply = qel::somif::Transfer(
        *this, method, qel::wire::kLogManager, body != nullptr ? body : "", qel::somif::kLogRules);
    const HRESULT result = qel::somif::ResultOf(TraceName(), reply, qel::somif::kLogRules);
    if (reply.state == qel::somif::Reply::State::kReceived && result == 0) {
        CSerializedMsg codec(TraceName());
        codec.StringArray2Array(reply.body, lines);
    }
    qel::TraceLeave(TraceName(), qel::sig::kGetManagerLog, result, qel::RcForm::kUnsigned64);
    return result;
}

HRESULT CSomIf::CollectDownloadLog(std::string appKey, std::vector<std::string>& lines) {
    qel::TraceEnter(TraceName(), qel::sig::kCollectDownloadLog, appKey);
    HRESULT result =
        getManagerLog(qel::wire::method::kCollectDownloadLog, getStrParam(appKey).c_str(), lines);
    qel::TraceLeave(TraceName(), qel::sig::kCollectDownloadLog, result, qel::RcForm::kUnsigned64);
    return ReduceNegative(result);
}

HRESULT CSomIf::CollectResultLog(std::string appKey, std::vector<std::string>& lines) {
    qel::TraceEnter(TraceName(), qel::sig::kCollectResultLog);
    HRESULT result =
        getManagerLog(qel::wire::method::kCollectResultLog, getStrParam(appKey).c_str(), lines);
    qel::TraceLeave(TraceName(), qel::sig::kCollectResultLog, result, qel::RcForm::kUnsigned64);
    return ReduceNegative(result);
}

HRESULT CSomIf::GetQELStatus(LONG& status) {
    qel::TraceEnter(TraceName(), qel::sig::kGetQELStatus);
    status = 0;
    CIniFileReader reader(CFileUtility::GetInstallPath(2) + qel::wire::kProcessStatusFile);
    std::string value;
    if (reader.find_section(qel::wire::status::kSection, qel::wire::status::kStatusKey, value)) {
        if (value == qel::wire::status::kDownload) {
            status = qel::wire::status::kCodeDownload;
        } else if (value.compare(0, std::strlen(qel::wire::status::kUpdate),
                                 qel::wire::status::kUpdate) == 0) {
            reader.find_section(qel::wire::status::kSection, qel::wire::status::kTypeKey, value);
            status = value == qel::wire::status::kRollback ? qel::wire::status::kCodeRollback
                                                           : qel::wire::status::kCodeUpdate;
        }
    }
    CTraceUtility::WriteDebug(TraceName(), qel::kLevelStatus, "%s ### status=%s, result=0x%x",
                              qel::sig::kGetQELStatus, value.c_str(),
                              static_cast<unsigned int>(status));
    reader.close();
    return 0;
}
