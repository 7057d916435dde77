// The one request/reply exchange behind every CSomIf operation.
//
// An operation names its rules, gets the reply with its header read once,
// and hands its decoder a pointer into the received bytes: no copy of the
// reply, no second parse of its header.
#ifndef QEL_SRC_SOMIF_EXCHANGE_H
#define QEL_SRC_SOMIF_EXCHANGE_H

#include <cstddef>
#include <string>

#include "CSomIf.h"
#include "wire.h"

namespace qel {
namespace somif {

// Where a reply's decoder starts reading.
enum class BodyStart {
    kAfterResultField,     // 16 characters after the first digit past the first "/"
    kRequestHeaderLength,  // at the request's header length, never past what came
};

// What tells one operation's exchange from another's.
struct ExchangeRules {
    unsigned long replyLimit;  // bytes a reply may fill, its NUL included
    HRESULT notSent;           // the result when the request did not go out
    BodyStart bodyStart;
};

constexpr ExchangeRules kStandardRules = {wire::kReplyBufferSize, wire::kSendFailed,
                                          BodyStart::kAfterResultField};
// The update plans and installed versions: replies cut at 8 KiB.
constexpr ExchangeRules kSmallListRules = {wire::kSmallReplyBufferSize, wire::kSendFailed,
                                           BodyStart::kAfterResultField};
// The log manager's lines: a request that did not go out gives -1.
constexpr ExchangeRules kLogRules = {wire::kReplyBufferSize, -1, BodyStart::kRequestHeaderLength};
constexpr ExchangeRules kProviderRules = {wire::kReplyBufferSize, wire::kSendFailed,
                                          BodyStart::kRequestHeaderLength};

// A reply's header, read once: what the result and the decoders need.
struct ReplyHeader {
    bool hasResultField = false;
    HRESULT resultField = 0;   // hexadecimal, 16 characters before the request's header end
    long ownHeaderLength = 0;  // the reply's first 8 characters in decimal
    std::size_t bodyAfterResultField = 0;
};

// `text` holds `length` characters (a C string); requestHeaderLength < 16
// means no result field is read.
ReplyHeader ReadReplyHeader(const char* text, std::size_t length, int requestHeaderLength);

struct Reply {
    enum class State { kNotSent, kLost, kReceived };
    State state = State::kNotSent;
    char* text = nullptr;    // NUL-terminated; "" when nothing came, what came when lost
    std::size_t length = 0;  // of `text`
    std::size_t stored = 0;  // bytes received (a NUL inside ends `text` earlier)
    int requestHeaderLength = 0;
    ReplyHeader header;
    char* body = nullptr;  // where the decoder starts, by the rules
};

// Header, send and receive into the transport's own storage (valid until
// the next exchange).
Reply Transfer(CSomIf& som, const char* method, const std::string& className,
               const std::string& body, const ExchangeRules& rules);
// The same into the caller's buffer, with the standard rules; its text is
// read only when a reply came.
Reply TransferInto(CSomIf& som, const char* method, const std::string& className,
                   const std::string& body, char* buffer, unsigned long bufferSize);

// A reply as an exchange left it: `stored` is what CFileTransfer::Exchange
// or RecvMessage returned; `text` (NUL-terminated) is null when unreadable.
Reply ReadReply(char* text, int stored, int requestHeaderLength, const ExchangeRules& rules);

// The exchange's result: the rules' code when not sent, 0x80081101 when
// lost, else the traced reading of the result field, then of ReturnValue.
HRESULT ResultOf(const std::string& traceName, const Reply& reply, const ExchangeRules& rules);

// The reading of a received reply's result with its trace lines.
HRESULT TracedResult(const std::string& traceName, const char* text, std::size_t length,
                     const ReplyHeader& header);
// The number of the first "long;ReturnValue;" item after the reply's own
// header, with its trace lines.
HRESULT TracedReturnValue(const std::string& traceName, const char* text, std::size_t length,
                          const ReplyHeader& header);

struct Exchanged {
    int rc;  // the low 32 bits of the result
    Reply reply;
};

// Transfer and ResultOf together, the form most operations use.
Exchanged Exchange(CSomIf& som, const std::string& traceName, const char* method,
                   const std::string& className, const std::string& body,
                   const ExchangeRules& rules = kStandardRules);

}  // namespace somif
}  // namespace qel

#endif  // QEL_SRC_SOMIF_EXCHANGE_H
