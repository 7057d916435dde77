// CSomIf: the typed provider-management queries.
#include <memory>

#include "CProviderManageInfo.h"
#include "CSomIf.h"
#include "common/trace.h"
#include "discovery/device_namer.h"
#include "somif_signatures.h"
#include "wire.h"

namespace {

const char kGetProviderManageInfo[] = "GetProviderManageInfo";

// Receives a provider reply and reads its body, located by the request's
// header length, into `info` whatever the result says.
template <class Info>
int ReceiveProvider(CSomIf& som, size_t headerLength, Info& info) {
    int rc = -1;
    std::unique_ptr<char[]> buffer(new char[qel::wire::kReplyBufferSize]);
    buffer[0] = '\0';
    const int received =
        som.RecvMessage(buffer.get(), static_cast<int>(qel::wire::kReplyBufferSize),
                        static_cast<int>(headerLength));
    if (received >= 0) {
        rc = static_cast<int>(som.getResult(static_cast<int>(headerLength), buffer.get()));
        const size_t offset = headerLength < static_cast<size_t>(received)
                                  ? headerLength
                                  : static_cast<size_t>(received);
        CProviderManageInfo codec(qel::kFixedSource);
        codec.toObject(buffer.get() + offset, info);
    }
    return rc;
}

// The query frame shared by both forms: send the bare header, receive,
// and map a missing or negative result to 0x80081101.
template <class Info>
int Query(CSomIf& som, const std::string& className, Info& info) {
    const std::string header = som.getMsgHead(className, kGetProviderManageInfo, 0);
    if (!qel::wire::HeaderIsWhole(header) || som.SendMessage(header) < 0)
        return static_cast<int>(qel::wire::kSendFailed);
    int rc = som.RecvProviderManageInfo(header.size(), info);
    return rc < 0 ? static_cast<int>(qel::wire::kReceiveFailed) : rc;
}

}  // namespace

HRESULT CSomIf::GetProviderManageInfo(std::string className, CVelmora_DevProviderManageInfo& info) {
    qel::TraceEnter(m_traceName, qel::sig::kGetProviderManageInfoDev, className);
    info.DeviceInfo.clear();
    int rc = Query(*this, className, info);
    // Every device named with GetDeviceName's rules and traces, the database
    // read once for all of them.
    qel::discovery::DeviceNamer namer(m_traceName, /*batch=*/info.DeviceInfo.size() > 1);
    for (CVelmora_DeviceInfo& device : info.DeviceInfo)
        namer.Name(device);
    qel::TraceLeave(m_traceName, qel::sig::kGetProviderManageInfoDev, rc, qel::RcForm::kSigned32);
    return qel::ZeroExtend(rc);
}

HRESULT CSomIf::GetProviderManageInfo(std::string className,
                                      CVelmora_ToolProviderManageInfo& info) {
    qel::TraceEnter(m_traceName, qel::sig::kGetProviderManageInfoTool, className);
    info.ToolInfo.clear();
    int rc = Query(*this, className, info);
    qel::TraceLeave(m_traceName, qel::sig::kGetProviderManageInfoTool, rc, qel::RcForm::kSigned32);
    return qel::ZeroExtend(rc);
}

int CSomIf::RecvProviderManageInfo(size_t headerLength, CVelmora_DevProviderManageInfo& info) {
    qel::TraceEnter(m_traceName, qel::sig::kRecvProviderManageInfoDev);
    int rc = ReceiveProvider(*this, headerLength, info);
    qel::TraceLeave(m_traceName, qel::sig::kRecvProviderManageInfoDev, rc, qel::RcForm::kSigned32);
    return rc;
}

int CSomIf::RecvProviderManageInfo(size_t headerLength, CVelmora_ToolProviderManageInfo& info) {
    qel::TraceEnter(m_traceName, qel::sig::kRecvProviderManageInfoTool);
    int rc = ReceiveProvider(*this, headerLength, info);
    qel::TraceLeave(m_traceName, qel::sig::kRecvProviderManageInfoTool, rc, qel::RcForm::kSigned32);
    return rc;
}
