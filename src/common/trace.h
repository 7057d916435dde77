// Trace helpers shared by the library's objects.
//
// Entry and exit lines are "[ENTER] " / "[LEAVE] " + signature, written at
// level 4; error lines are the signature, one blank and a message, at level 2.
// The composed text is always passed through "%s", so a "%" in a class name
// or key can never be read as a conversion. Nothing is formatted while the
// trace facility would drop the line.
#ifndef QEL_SRC_COMMON_TRACE_H
#define QEL_SRC_COMMON_TRACE_H

#include <cstdint>
#include <string>

#include "CTraceUtility.h"
#include "QelTypes.h"

namespace qel {

constexpr int kLevelStatus = 1;
constexpr int kLevelError = 2;
constexpr int kLevelEntry = 4;
constexpr int kLevelDetail = 32;

// The trace source of the base decoders and the provider queries.
constexpr const char kFixedSource[] = "som";

// How an exit line prints a result code.
enum class RcForm {
    kSigned32,           // 0x80081001 -> -2146955263
    kWidenedUnsigned64,  // 0x80081001 -> 18446744071562596353
    kSigned64,           // the 64-bit value as is
    kUnsigned64,         // the 64-bit value printed unsigned
};

std::string FormatRc(HRESULT rc, RcForm form);

void TraceEnter(const std::string& source, const char* signature);
// "[ENTER] " + signature + " " + detail (a class name, a key).
void TraceEnter(const std::string& source, const char* signature, const std::string& detail);
void TraceLeave(const std::string& source, const char* signature);
void TraceLeave(const std::string& source, const char* signature, HRESULT rc, RcForm form);

// A fixed text as the whole line.
void TraceMessageLine(const std::string& source, int level, const char* text);

// signature + " " + the message formatted with one string argument (or none).
void TraceMessage(const std::string& source, int level, const char* signature,
                  const char* messageFormat, const char* argument = nullptr);

// The result code as the 32-bit value zero-extended, which is how the
// operations hand codes to their callers.
inline HRESULT ZeroExtend(HRESULT rc) {
    return static_cast<HRESULT>(static_cast<uint32_t>(rc));
}

}  // namespace qel

#endif  // QEL_SRC_COMMON_TRACE_H
