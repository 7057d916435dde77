#include "trace.h"

#include <cstdio>

namespace qel {
namespace {

const char kEnter[] = "[ENTER] ";
const char kLeave[] = "[LEAVE] ";
const char kRcSeparator[] = ", rc=";

void Write(const std::string& source, int level, const std::string& text) {
    CTraceUtility::WriteDebug(source, level, "%s", text.c_str());
}

}  // namespace

std::string FormatRc(HRESULT rc, RcForm form) {
    const int32_t low = static_cast<int32_t>(static_cast<uint32_t>(rc));
    switch (form) {
        case RcForm::kSigned32:
            return std::to_string(low);
        case RcForm::kWidenedUnsigned64:
            return std::to_string(static_cast<uint64_t>(static_cast<int64_t>(low)));
        case RcForm::kSigned64:
            return std::to_string(static_cast<int64_t>(rc));
        case RcForm::kUnsigned64:
            return std::to_string(static_cast<uint64_t>(rc));
    }
    return std::string();
}

void TraceEnter(const std::string& source, const char* signature) {
    if (!CTraceUtility::IsEnabled(kLevelEntry))
        return;
    Write(source, kLevelEntry, std::string(kEnter) + signature);
}

void TraceEnter(const std::string& source, const char* signature, const std::string& detail) {
    if (!CTraceUtility::IsEnabled(kLevelEntry))
        return;
    Write(source, kLevelEntry, std::string(kEnter) + signature + " " + detail);
}

void TraceLeave(const std::string& source, const char* signature) {
    if (!CTraceUtility::IsEnabled(kLevelEntry))
        return;
    Write(source, kLevelEntry, std::string(kLeave) + signature);
}

void TraceLeave(const std::string& source, const char* signature, HRESULT rc, RcForm form) {
    if (!CTraceUtility::IsEnabled(kLevelEntry))
        return;
    Write(source, kLevelEntry, std::string(kLeave) + signature + kRcSeparator + FormatRc(rc, form));
}

void TraceMessageLine(const std::string& source, int level, const char* text) {
    CTraceUtility::WriteDebug(source, level, "%s", text);
}

void TraceMessage(const std::string& source, int level, const char* signature,
                  const char* messageFormat, const char* argument) {
    if (!CTraceUtility::IsEnabled(level))
        return;
    std::string text(signature);
    text.push_back(' ');
    if (argument == nullptr) {
        text.append(messageFormat);
    } else {
        int needed = std::snprintf(nullptr, 0, messageFormat, argument);
        if (needed > 0) {
            std::string message(static_cast<size_t>(needed) + 1, '\0');
            std::snprintf(&message[0], message.size(), messageFormat, argument);
            message.resize(static_cast<size_t>(needed));
            text.append(message);
        }
    }
    Write(source, level, text);
}

}  // namespace qel
