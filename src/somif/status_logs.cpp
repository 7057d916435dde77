// CSomIf: status, version lists and logs.
#include <cstring>
#include <memory>

#include "CFileUtility.h"
#include "CIniFileReader.h"
#include "CSerializedMsg.h"
#include "CSomIf.h"
#include "CTraceUtility.h"
#include "CVersionUpLog.h"
#include "common/trace.h"
#include "list_exchange.h"
#include "somif_signatures.h"
#include "wire.h"

namespace {

const char kCollectQelVersion[] = "CollectQelVersion";
const char kCollectVersionUpLog[] = "CollectVersionUpLog";
const char kCollectDownloadLog[] = "CollectDownloadLog";
const char kCollectResultLog[] = "CollectResultLog";

const char kStatusFile[] = "/ProcessStatus.ini";
const char kStatusSection[] = "icon";
const char kStatusKey[] = "status";
const char kTypeKey[] = "type";
const char kDownloading[] = "download";
const char kUpdatingPrefix[] = "update";
const char kRollback[] = "rollback";
const LONG kStatusUpdate = 0x8001;
const LONG kStatusRollback = 0x8002;
const LONG kStatusDownload = 0x8003;

// The log results are handed back reduced to 32 bits when negative.
HRESULT ReduceNegative(HRESULT result) {
    return result < 0 ? qel::ZeroExtend(result) : result;
}

}  // namespace

HRESULT CSomIf::CollectQelVersion(std::vector<CVELMORA_QelVersionInfo>& versions) {
    qel::TraceEnter(m_traceName, qel::sig::kCollectQelVersion);
    int rc = qel::ExchangeSmallList(*this, m_traceName, kCollectQelVersion, qel::wire::kQelVersion,
                                    std::string(), versions);
    qel::TraceLeave(m_traceName, qel::sig::kCollectQelVersion, rc, qel::RcForm::kSigned32);
    return qel::ZeroExtend(rc);
}

HRESULT CSomIf::CollectVersionUpLog(std::vector<CVELMORA_VersionUpdateLog>& logs) {
    qel::TraceEnter(m_traceName, qel::sig::kCollectVersionUpLog);
    std::string reply;
    int rc = TransMessage(kCollectVersionUpLog, qel::wire::kLogManager, reply);
    if (!qel::wire::IsNegative(rc)) {
        CVersionUpLog codec(m_traceName);
        codec.toObject(&reply[0] + getSpecificPos(reply), logs);
    }
    qel::TraceLeave(m_traceName, qel::sig::kCollectVersionUpLog, rc, qel::RcForm::kSigned32);
    return qel::ZeroExtend(rc);
}

HRESULT CSomIf::getManagerLog(const char* method, const char* body,
                              std::vector<std::string>& lines) {
    qel::TraceEnter(m_traceName, qel::sig::kGetManagerLog);
    const std::string text = body != nullptr ? body : "";
    const std::string header =
        getMsgHead(qel::wire::kLogManager, method, static_cast<uint32_t>(text.size()));
    const int headerLength = static_cast<int>(header.size());
    HRESULT result = -1;
    if (qel::wire::HeaderIsWhole(header) && SendMessage(header + text) != -1) {
        std::unique_ptr<char[]> buffer(new char[qel::wire::kReplyBufferSize]);
        buffer[0] = '\0';
        const int received =
            RecvMessage(buffer.get(), static_cast<int>(qel::wire::kReplyBufferSize), headerLength);
        if (received < 0) {
            // Nothing arrived to read a result from: the exchange's own code.
            result = qel::wire::kReceiveFailed;
        } else {
            result = getResult(headerLength, buffer.get());
            if (result == 0) {
                // The body is located by the request's header length.
                const int offset = received < headerLength ? received : headerLength;
                CSerializedMsg codec(m_traceName);
                codec.StringArray2Array(buffer.get() + offset, lines);
            }
        }
    }
    qel::TraceLeave(m_traceName, qel::sig::kGetManagerLog, result, qel::RcForm::kUnsigned64);
    return result;
}

HRESULT CSomIf::CollectDownloadLog(std::string appKey, std::vector<std::string>& lines) {
    qel::TraceEnter(m_traceName, qel::sig::kCollectDownloadLog, appKey);
    HRESULT result = getManagerLog(kCollectDownloadLog, getStrParam(appKey).c_str(), lines);
    qel::TraceLeave(m_traceName, qel::sig::kCollectDownloadLog, result, qel::RcForm::kUnsigned64);
    return ReduceNegative(result);
}

HRESULT CSomIf::CollectResultLog(std::string appKey, std::vector<std::string>& lines) {
    qel::TraceEnter(m_traceName, qel::sig::kCollectResultLog);
    HRESULT result = getManagerLog(kCollectResultLog, getStrParam(appKey).c_str(), lines);
    qel::TraceLeave(m_traceName, qel::sig::kCollectResultLog, result, qel::RcForm::kUnsigned64);
    return ReduceNegative(result);
}

HRESULT CSomIf::GetQELStatus(LONG& status) {
    qel::TraceEnter(m_traceName, qel::sig::kGetQELStatus);
    status = 0;
    CIniFileReader reader(CFileUtility::GetInstallPath(2) + kStatusFile);
    std::string value;
    if (reader.find_section(kStatusSection, kStatusKey, value)) {
        if (value == kDownloading) {
            status = kStatusDownload;
        } else if (value.compare(0, std::strlen(kUpdatingPrefix), kUpdatingPrefix) == 0) {
            reader.find_section(kStatusSection, kTypeKey, value);
            status = value == kRollback ? kStatusRollback : kStatusUpdate;
        }
    }
    CTraceUtility::WriteDebug(m_traceName, qel::kLevelStatus, "%s ### status=%s, result=0x%x",
                              qel::sig::kGetQELStatus, value.c_str(),
                              static_cast<unsigned int>(status));
    reader.close();
    return 0;
}
