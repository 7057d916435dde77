// CSomIf: construction, the message header and the hand-built items.
#include "CSomIf.h"

#include <cstdio>

#include "QelItemText.h"
#include "common/trace.h"
#include "somif_signatures.h"
#include "wire.h"

CSomIf::CSomIf(std::string traceName)
    : CFileTransfer(std::move(traceName), qel::wire::kSocketConfig) {
    qel::TraceEnter(TraceName(), qel::sig::kConstructor);
    qel::TraceLeave(TraceName(), qel::sig::kConstructor);
}

CSomIf::~CSomIf() {
    qel::TraceEnter(TraceName(), qel::sig::kDestructor);
    qel::TraceLeave(TraceName(), qel::sig::kDestructor);
}

std::string CSomIf::getShortFuncName(const std::string& func) {
    std::string::size_type paren = func.find('(');
    if (paren == std::string::npos)
        return func;
    std::string::size_type scope = func.find("::");
    // A text with "(" but no "::" before it: the text up to "(" (no caller
    // of this library passes one).
    std::string::size_type start = (scope == std::string::npos || scope > paren) ? 0 : scope + 2;
    return func.substr(start, paren - start);
}

std::string CSomIf::getMsgHead(std::string className, const char* func, uint32_t bodyLength) {
    qel::TraceEnter(TraceName(), qel::sig::kGetMsgHead);
    const std::string method = getShortFuncName(func != nullptr ? func : "");
    const int headerLength = qel::wire::kHeaderFixedLength + static_cast<int>(method.size()) +
                             static_cast<int>(className.size());
    char buffer[qel::wire::kHeaderBufferSize];
    int written = std::snprintf(buffer, sizeof buffer, qel::wire::kHeaderFormat, headerLength,
                                qel::wire::kMagic, className.c_str(), method.c_str(), 0,
                                static_cast<unsigned>(bodyLength));
    std::string header;
    if (written >= static_cast<int>(sizeof buffer)) {
        const std::string why = "a header of " + std::to_string(written) +
                                " bytes does not fit the " + std::to_string(sizeof buffer) +
                                "-byte buffer: not sent";
        qel::TraceMessage(TraceName(), qel::kLevelError, qel::sig::kGetMsgHead, "%s", why.c_str());
    }
    if (written > 0) {
        header.assign(buffer, static_cast<std::size_t>(written) < sizeof buffer
                                  ? static_cast<std::size_t>(written)
                                  : sizeof buffer - 1);
    }
    qel::TraceLeave(TraceName(), qel::sig::kGetMsgHead);
    return header;
}

std::string CSomIf::getMsgHead(const CMofContents& mof, const char* func, uint32_t bodyLength) {
    return getMsgHead(mof.ClassName, func, bodyLength);
}

std::string CSomIf::getBoolParam(const char* name, bool value) {
    std::string item;
    qel::item::AppendItem(item, qel::item::kTagBool, name != nullptr ? name : "",
                          value ? "1" : "0");
    return item;
}

std::string CSomIf::getStrParam(std::string value) {
    std::string item(qel::wire::kAppKeyItem);
    item.append(value).push_back(qel::item::kFieldEnd);
    return item;
}
