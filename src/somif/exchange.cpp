// CSomIf: the one request/reply exchange and the reading of results.
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "CSomIf.h"
#include "common/trace.h"
#include "somif_signatures.h"
#include "wire.h"

namespace {

// A heap receive buffer whose bytes are left as they are: only what arrives
// is written, plus the NUL that ends it.
std::unique_ptr<char[]> ReceiveBuffer(unsigned long size) {
    std::unique_ptr<char[]> buffer(new char[size]);
    buffer[0] = '\0';
    return buffer;
}

// The decimal number at `text` (strtol: blanks and a sign accepted, reading
// stops at the first non-digit, so at the ";" that closes the item).
long NumberAt(const char* text) {
    return std::strtol(text, nullptr, 10);
}

// The number of the first "long;ReturnValue;" item of a reply's body, the
// body starting at the reply's own header length (its first 8 characters).
// Works on the received bytes in place: a 4 MiB reply is neither copied nor
// searched character by character.
HRESULT ReturnValueIn(const char* reply, std::size_t length) {
    char field[qel::wire::kFieldWidth + 1] = {0};
    std::memcpy(field, reply, length < sizeof field - 1 ? length : sizeof field - 1);
    const long headerLength = NumberAt(field);
    if (headerLength < 0 || static_cast<std::size_t>(headerLength) >= length)
        return 0;
    const std::size_t itemLength = std::strlen(qel::wire::kReturnValueItem);
    const void* item = memmem(reply + headerLength, length - headerLength,
                              qel::wire::kReturnValueItem, itemLength);
    return item == nullptr ? 0 : NumberAt(static_cast<const char*>(item) + itemLength);
}

HRESULT TracedReturnValue(const std::string& traceName, const char* reply, std::size_t length) {
    qel::TraceEnter(traceName, qel::sig::kGetReturnValue);
    const HRESULT value = ReturnValueIn(reply, length);
    qel::TraceLeave(traceName, qel::sig::kGetReturnValue, value, qel::RcForm::kSigned64);
    return value;
}

}  // namespace

int CSomIf::TransMessage(const char* func, std::string className, std::string& body, char* buffer,
                         unsigned long bufferSize) {
    const std::string header = getMsgHead(className, func, static_cast<uint32_t>(body.size()));
    const int headerLength = static_cast<int>(header.size());
    if (buffer != nullptr && bufferSize > 0)
        buffer[0] = '\0';
    if (!qel::wire::HeaderIsWhole(header) || SendMessage(header + body) == -1)
        return static_cast<int>(qel::wire::kSendFailed);
    const int size =
        bufferSize > static_cast<unsigned long>(INT_MAX) ? INT_MAX : static_cast<int>(bufferSize);
    if (RecvMessage(buffer, size, headerLength) < 0) {
        return static_cast<int>(qel::wire::kReceiveFailed);
    }
    return static_cast<int>(getResult(headerLength, buffer));
}

int CSomIf::TransMessage(const char* func, std::string className, std::string& body) {
    std::unique_ptr<char[]> buffer = ReceiveBuffer(qel::wire::kReplyBufferSize);
    int result =
        TransMessage(func, std::move(className), body, buffer.get(), qel::wire::kReplyBufferSize);
    body.assign(buffer.get());
    return result;
}

int CSomIf::TransMessage(const char* func, std::string className, const char*) {
    std::unique_ptr<char[]> buffer = ReceiveBuffer(qel::wire::kReplyBufferSize);
    std::string body;
    return TransMessage(func, std::move(className), body, buffer.get(),
                        qel::wire::kReplyBufferSize);
}

HRESULT CSomIf::getResult(int headerLength, const char* reply) {
    qel::TraceEnter(m_traceName, qel::sig::kGetResult);
    HRESULT value = 0;
    const int fieldOffset = headerLength - qel::wire::kTrailingFieldsLength;
    if (reply != nullptr && fieldOffset >= 0 &&
        strnlen(reply, static_cast<std::size_t>(fieldOffset)) ==
            static_cast<std::size_t>(fieldOffset)) {
        // The 8 characters of the result field, or fewer when the reply ends.
        char field[qel::wire::kFieldWidth + 1] = {0};
        std::strncpy(field, reply + fieldOffset, qel::wire::kFieldWidth);
        unsigned long parsed = 0;
        if (std::sscanf(field, "%lx", &parsed) == 1)
            value = static_cast<HRESULT>(parsed);
    }
    if (value == 0 && reply != nullptr) {
        value = TracedReturnValue(m_traceName, reply, std::strlen(reply));
    }
    qel::TraceLeave(m_traceName, qel::sig::kGetResult, value, qel::RcForm::kSigned32);
    return value;
}

HRESULT CSomIf::GetReturnValue(std::string reply) {
    return TracedReturnValue(m_traceName, reply.data(), reply.size());
}

unsigned int CSomIf::getSpecificPos(std::string reply) {
    std::string::size_type slash = reply.find(qel::wire::kClassMethodSeparator);
    if (slash == std::string::npos)
        return 0;
    std::string::size_type digit = reply.find_first_of("0123456789", slash + 1);
    // No digit after "/": a malformed reply; its body is taken as empty.
    if (digit == std::string::npos)
        return static_cast<unsigned int>(reply.size());
    std::string::size_type body = digit + qel::wire::kTrailingFieldsLength;
    return static_cast<unsigned int>(body < reply.size() ? body : reply.size());
}

long CSomIf::getRebootKind(const char* text) {
    if (text == nullptr || text[0] == '\0')
        return 0;
    const char* item = std::strstr(text + 1, qel::wire::kRebootItem);
    if (item == nullptr)
        return 0;
    return NumberAt(item + std::strlen(qel::wire::kRebootItem));
}
