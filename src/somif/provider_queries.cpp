// CSomIf: the typed provider-management queries.
#include <memory>

#include "CProviderManageInfo.h"
#include "CSomIf.h"
#include "common/trace.h"
#include "discovery/device_namer.h"
#include "somif_signatures.h"
#include "exchange.h"

namespace {

using qel::somif::Reply;

const char* ReceiveSignature(const CVelmora_DevProviderManageInfo&) {
    return qel::sig::kRecvProviderManageInfoDev;
}
const char* ReceiveSignature(const CVelmora_ToolProviderManageInfo&) {
    return qel::sig::kRecvProviderManageInfoTool;
}

// Reads a provider reply's result, and its body into `info` whatever the
// result says; -1 when no reply came. Traced as the public receive.
template <class Info>
int ReadProvider(const std::string& traceName, const Reply& reply, Info& info) {
    qel::TraceEnter(traceName, ReceiveSignature(info));
    int rc = -1;
    if (reply.state == Reply::State::kReceived) {
        rc = static_cast<int>(qel::somif::ResultOf(traceName, reply, qel::somif::kProviderRules));
        CProviderManageInfo codec(qel::kFixedSource);
        codec.toObject(reply.body, info);
    }
    qel::TraceLeave(traceName, ReceiveSignature(info), rc, qel::RcForm::kSigned32);
    return rc;
}

// The query frame shared by both forms: a bare header, and a missing or
// negative result mapped to 0x80081101.
template <class Info>
int Query(CSomIf& som, const std::string& traceName, const std::string& className, Info& info) {
    const Reply reply = qel::somif::Transfer(som, qel::wire::method::kGetProviderManageInfo,
                                             className, std::string(), qel::somif::kProviderRules);
    if (reply.state == Reply::State::kNotSent)
        return static_cast<int>(qel::wire::kSendFailed);
    const int rc = ReadProvider(traceName, reply, info);
    return rc < 0 ? static_cast<int>(qel::wire::kReceiveFailed) : rc;
}

// The receive of a request the caller sent.
template <class Info>
int ReceiveProvider(CSomIf& som, const std::string& traceName, size_t headerLength, Info& info) {
    std::unique_ptr<char[]> buffer(new char[qel::wire::kReplyBufferSize]);
    buffer[0] = '\0';
    const int length = static_cast<int>(headerLength);
    const int stored =
        som.RecvMessage(buffer.get(), static_cast<int>(qel::wire::kReplyBufferSize), length);
    return ReadProvider(traceName,
                        qel::somif::ReadReply(stored >= 0 ? buffer.get() : nullptr, stored, length,
                                              qel::somif::kProviderRules),
                        info);
}

}  // namespace

HRESULT CSomIf::GetProviderManageInfo(std::string className, CVelmora_DevProviderManageInfo& info) {
    qel::TraceEnter(TraceName(), qel::sig::kGetProviderManageInfoDev, className);
    info.DeviceInfo.clear();
    int rc = Query(*this, TraceName(), className, info);
    // Every device named with GetDeviceName's rules and traces, the database
    // read once for all of them.
    qel::discovery::DeviceNamer namer(TraceName(), /*batch=*/info.DeviceInfo.size() > 1);
    for (CVelmora_DeviceInfo& device : info.DeviceInfo)
        namer.Name(device);
    qel::TraceLeave(TraceName(), qel::sig::kGetProviderManageInfoDev, rc, qel::RcForm::kSigned32);
    return qel::ZeroExtend(rc);
}

HRESULT CSomIf::GetProviderManageInfo(std::string className,
                                      CVelmora_ToolProviderManageInfo& info) {
    qel::TraceEnter(TraceName(), qel::sig::kGetProviderManageInfoTool, className);
    info.ToolInfo.clear();
    int rc = Query(*this, TraceName(), className, info);
    qel::TraceLeave(TraceName(), qel::sig::kGetProviderManageInfoTool, rc, qel::RcForm::kSigned32);
    return qel::ZeroExtend(rc);
}

int CSomIf::RecvProviderManageInfo(size_t headerLength, CVelmora_DevProviderManageInfo& info) {
    return ReceiveProvider(*this, TraceName(), headerLength, info);
}

int CSomIf::RecvProviderManageInfo(size_t headerLength, CVelmora_ToolProviderManageInfo& info) {
    return ReceiveProvider(*this, TraceName(), headerLength, info);
}
