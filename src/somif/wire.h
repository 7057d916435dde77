// Wire facts of the SOM service protocol: the message header, the result
// codes and the service classes.
#ifndef QEL_SRC_SOMIF_WIRE_H
#define QEL_SRC_SOMIF_WIRE_H

#include <cstddef>
#include <cstdlib>
#include <string>

#include "QelTypes.h"

namespace qel {
namespace wire {

// Header: "%08d" header length, "%08lx" magic, class, "/", method,
// "%08d" result field, "%08d" body length.
constexpr const char kHeaderFormat[] = "%08d%08lx%s/%s%08d%08u";
constexpr unsigned long kMagic = 0xCAFEFEEDUL;
constexpr int kHeaderFixedLength = 33;
constexpr std::size_t kHeaderBufferSize = 1024;
constexpr int kFieldWidth = 8;

// True when the header is as long as its own length field says: a class plus
// method name too long for kHeaderBufferSize gives a cut header, never sent.
inline bool HeaderIsWhole(const std::string& header) {
    return header.size() > static_cast<std::size_t>(kFieldWidth) &&
           std::strtoul(header.substr(0, kFieldWidth).c_str(), nullptr, 10) == header.size();
}
// From the first digit of the result field to the body: result field and
// body-length field.
constexpr int kTrailingFieldsLength = 16;
constexpr char kClassMethodSeparator = '/';

constexpr const char kSocketConfig[] = "/opt/velmora/qel/som/socket.conf";

constexpr unsigned long kReplyBufferSize = 0x400000;     // 4 MiB
constexpr unsigned long kSmallReplyBufferSize = 0x2000;  // 8 KiB

constexpr HRESULT kSendFailed = 0x80081001L;
constexpr HRESULT kReceiveFailed = 0x80081101L;
constexpr unsigned long kTransportFamilyMask = 0x80080000UL;

inline bool IsTransportFamily(HRESULT rc) {
    return (static_cast<unsigned long>(rc) & kTransportFamilyMask) == kTransportFamilyMask;
}
// The 32-bit result taken as signed.
inline bool IsNegative(HRESULT rc) {
    return static_cast<int>(static_cast<unsigned int>(rc)) < 0;
}

constexpr const char kReturnValueItem[] = "long;ReturnValue;";
constexpr const char kRebootItem[] = "long;Reboot;";
constexpr const char kAppKeyItem[] = "string;AppKey;";

constexpr const char kUpdateManager[] = "VELMORA_UpdateManager";
constexpr const char kToolServiceWD[] = "VELMORA_ToolServiceWD";
constexpr const char kLogManager[] = "VELMORA_LogManager";
constexpr const char kQelVersion[] = "VELMORA_QelVersion";

}  // namespace wire
}  // namespace qel

#endif  // QEL_SRC_SOMIF_WIRE_H
