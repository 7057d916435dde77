// CSomIf: the one request/reply exchange and the reading of results.
#include "exchange.h"

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "common/trace.h"
#include "somif_signatures.h"

namespace qel {
namespace somif {
namespace {

// The decimal number at `text` (strtol: blanks and a sign accepted, reading
// stops at the first non-digit, so at the ";" that closes the item).
long NumberAt(const char* text) {
    return std::strtol(text, nullptr, 10);
}

// Up to kFieldWidth characters from `at`, NUL-terminated, for the C readers.
struct Field {
    Field(const char* at, std::size_t available) {
        std::memcpy(text, at, available < sizeof text - 1 ? available : sizeof text - 1);
    }
    char text[wire::kFieldWidth + 1] = {0};
};

std::size_t BodyAfterResultField(const char* text, std::size_t length) {
    const char* slash =
        static_cast<const char*>(std::memchr(text, wire::kClassMethodSeparator, length));
    if (slash == nullptr)
        return 0;
    for (const char* at = slash + 1; at < text + length; ++at) {
        if (*at >= '0' && *at <= '9') {
            const std::size_t body = static_cast<std::size_t>(at - text) +
                                     static_cast<std::size_t>(wire::kTrailingFieldsLength);
            return body < length ? body : length;
        }
    }
    return length;  // no digit after "/": a malformed reply, its body taken as empty
}

Reply Run(CSomIf& som, const char* method, const std::string& className, const std::string& body,
          const ExchangeRules& rules, bool intoCallerBuffer, char* buffer,
          unsigned long bufferSize) {
    if (intoCallerBuffer && buffer != nullptr && bufferSize > 0)
        buffer[0] = '\0';
    const std::string header =
        som.getMsgHead(className, method, static_cast<uint32_t>(body.size()));
    const int headerLength = static_cast<int>(header.size());
    int stored = CFileTransfer::kNotSent;
    if (wire::HeaderIsWhole(header)) {
        const std::string request = header + body;
        if (intoCallerBuffer) {
            const int size = bufferSize > static_cast<unsigned long>(INT_MAX)
                                 ? INT_MAX
                                 : static_cast<int>(bufferSize);
            stored = som.Exchange(request, headerLength, buffer, size);
        } else {
            stored = som.Exchange(request, headerLength, rules.replyLimit);
        }
    }
    char* text = nullptr;  // the caller's buffer is read only when a reply came
    if (!intoCallerBuffer) {
        text = som.ReplyBytes();
        if (stored == CFileTransfer::kNotSent)
            text[0] = '\0';
    } else if (stored >= 0) {
        text = buffer;
    }
    return ReadReply(text, stored, headerLength, rules);
}

}  // namespace

Reply ReadReply(char* text, int stored, int requestHeaderLength, const ExchangeRules& rules) {
    Reply reply;
    reply.requestHeaderLength = requestHeaderLength;
    reply.state = stored == CFileTransfer::kNotSent ? Reply::State::kNotSent
                  : stored < 0                      ? Reply::State::kLost
                                                    : Reply::State::kReceived;
    if (text == nullptr)
        return reply;
    reply.text = text;
    reply.stored = stored > 0 ? static_cast<std::size_t>(stored) : 0;
    reply.length = std::strlen(reply.text);
    reply.header = ReadReplyHeader(reply.text, reply.length, reply.requestHeaderLength);
    if (rules.bodyStart == BodyStart::kAfterResultField) {
        reply.body = reply.text + reply.header.bodyAfterResultField;
    } else {
        const std::size_t at = static_cast<std::size_t>(reply.requestHeaderLength);
        reply.body = reply.text + (at < reply.stored ? at : reply.stored);
    }
    return reply;
}

ReplyHeader ReadReplyHeader(const char* text, std::size_t length, int requestHeaderLength) {
    ReplyHeader header;
    if (text == nullptr)
        return header;
    header.ownHeaderLength = NumberAt(Field(text, length).text);
    const int fieldOffset = requestHeaderLength - wire::kTrailingFieldsLength;
    if (fieldOffset >= 0 && length >= static_cast<std::size_t>(fieldOffset)) {
        const Field field(text + fieldOffset, length - static_cast<std::size_t>(fieldOffset));
        unsigned long parsed = 0;
        header.hasResultField = std::sscanf(field.text, "%lx", &parsed) == 1;
        header.resultField = header.hasResultField ? static_cast<HRESULT>(parsed) : 0;
    }
    header.bodyAfterResultField = BodyAfterResultField(text, length);
    return header;
}

Reply Transfer(CSomIf& som, const char* method, const std::string& className,
               const std::string& body, const ExchangeRules& rules) {
    return Run(som, method, className, body, rules, /*intoCallerBuffer=*/false, nullptr, 0);
}

Reply TransferInto(CSomIf& som, const char* method, const std::string& className,
                   const std::string& body, char* buffer, unsigned long bufferSize) {
    return Run(som, method, className, body, kStandardRules, /*intoCallerBuffer=*/true, buffer,
               bufferSize);
}

HRESULT TracedReturnValue(const std::string& traceName, const char* text, std::size_t length,
                          const ReplyHeader& header) {
    TraceEnter(traceName, sig::kGetReturnValue);
    HRESULT value = 0;
    const long start = header.ownHeaderLength;
    if (start >= 0 && static_cast<std::size_t>(start) < length) {
        // In place: a 4 MiB reply is neither copied nor searched character by character.
        const std::size_t itemLength = std::strlen(wire::kReturnValueItem);
        const void* item = memmem(text + start, length - static_cast<std::size_t>(start),
                                  wire::kReturnValueItem, itemLength);
        if (item != nullptr)
            value = NumberAt(static_cast<const char*>(item) + itemLength);
    }
    TraceLeave(traceName, sig::kGetReturnValue, value, RcForm::kSigned64);
    return value;
}

HRESULT TracedResult(const std::string& traceName, const char* text, std::size_t length,
                     const ReplyHeader& header) {
    TraceEnter(traceName, sig::kGetResult);
    HRESULT value = header.resultField;
    if (value == 0 && text != nullptr)
        value = TracedReturnValue(traceName, text, length, header);
    TraceLeave(traceName, sig::kGetResult, value, RcForm::kSigned32);
    return value;
}

HRESULT ResultOf(const std::string& traceName, const Reply& reply, const ExchangeRules& rules) {
    switch (reply.state) {
        case Reply::State::kNotSent:
            return rules.notSent;
        case Reply::State::kLost:
            return wire::kReceiveFailed;
        case Reply::State::kReceived:
            break;
    }
    return TracedResult(traceName, reply.text, reply.length, reply.header);
}

Exchanged Exchange(CSomIf& som, const std::string& traceName, const char* method,
                   const std::string& className, const std::string& body,
                   const ExchangeRules& rules) {
    Exchanged exchanged{0, Transfer(som, method, className, body, rules)};
    exchanged.rc = static_cast<int>(ResultOf(traceName, exchanged.reply, rules));
    return exchanged;
}

}  // namespace somif
}  // namespace qel

using qel::somif::Reply;

int CSomIf::TransMessage(const char* func, std::string className, std::string& body, char* buffer,
                         unsigned long bufferSize) {
    const Reply reply = qel::somif::TransferInto(*this, func, className, body, buffer, bufferSize);
    return static_cast<int>(qel::somif::ResultOf(TraceName(), reply, qel::somif::kStandardRules));
}

int CSomIf::TransMessage(const char* func, std::string className, std::string& body) {
    const qel::somif::Exchanged exchanged =
        qel::somif::Exchange(*this, TraceName(), func, className, body);
    body.assign(exchanged.reply.text, exchanged.reply.length);
    return exchanged.rc;
}

int CSomIf::TransMessage(const char* func, std::string className, const char*) {
    return qel::somif::Exchange(*this, TraceName(), func, className, std::string()).rc;
}

HRESULT CSomIf::getResult(int headerLength, const char* reply) {
    const std::size_t length = reply != nullptr ? std::strlen(reply) : 0;
    return qel::somif::TracedResult(TraceName(), reply, length,
                                    qel::somif::ReadReplyHeader(reply, length, headerLength));
}

HRESULT CSomIf::GetReturnValue(std::string reply) {
    return qel::somif::TracedReturnValue(
        TraceName(), reply.data(), reply.size(),
        qel::somif::ReadReplyHeader(reply.data(), reply.size(), 0));
}

unsigned int CSomIf::getSpecificPos(std::string reply) {
    return static_cast<unsigned int>(
        qel::somif::ReadReplyHeader(reply.data(), reply.size(), 0).bodyAfterResultField);
}

long CSomIf::getRebootKind(const char* text) {
    if (text == nullptr || text[0] == '\0')
        return 0;
    const char* item = std::strstr(text + 1, qel::wire::kRebootItem);
    if (item == nullptr)
        return 0;
    return qel::somif::NumberAt(item + std::strlen(qel::wire::kRebootItem));
}
