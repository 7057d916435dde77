#include "CResultCode.h"

#include <cstdio>

namespace {

struct Known {
    uint32_t code;
    const char* words;
};

// One row per code that has words; IsService() reads the service's rows.
constexpr Known kTransportCodes[] = {
    {CResultCode::kNotSent, "the request could not be sent"},
    {CResultCode::kNoReply, "no reply came within the time-out"},
};
constexpr Known kServiceCodes[] = {
    {CResultCode::kAuthorityHeld, "the operating authority is held by another application key"},
    {CResultCode::kNotAuthorityHolder,
     "this application key does not hold the operating authority"},
    {CResultCode::kUnknownMethod, "the service does not serve this class or method"},
    {CResultCode::kBadRequest, "the service could not read the request"},
    {CResultCode::kBusy, "a download, update or rollback is already running"},
    {CResultCode::kUnknownParameter, "no such alive-monitor parameter"},
    {CResultCode::kStateNotSaved, "the service could not save its state"},
    {CResultCode::kNotRecorded, "no recorded reply matches the request (a replaying service)"},
};

template <std::size_t N>
const char* Find(const Known (&table)[N], uint32_t code) {
    for (const Known& known : table) {
        if (known.code == code)
            return known.words;
    }
    return nullptr;
}

std::string Hex(uint32_t code) {
    char text[11];
    std::snprintf(text, sizeof text, "0x%08X", code);
    return text;
}

}  // namespace

constexpr uint32_t CResultCode::kOk;
constexpr uint32_t CResultCode::kTransportFamilyMask;
constexpr uint32_t CResultCode::kNotSent;
constexpr uint32_t CResultCode::kNoReply;
constexpr uint32_t CResultCode::kAuthorityHeld;
constexpr uint32_t CResultCode::kNotAuthorityHolder;
constexpr uint32_t CResultCode::kUnknownMethod;
constexpr uint32_t CResultCode::kBadRequest;
constexpr uint32_t CResultCode::kBusy;
constexpr uint32_t CResultCode::kUnknownParameter;
constexpr uint32_t CResultCode::kStateNotSaved;
constexpr uint32_t CResultCode::kNotRecorded;

bool CResultCode::IsTransport(uint32_t code) {
    return (code & kTransportFamilyMask) == kTransportFamilyMask;
}

bool CResultCode::IsService(uint32_t code) {
    return Find(kServiceCodes, code) != nullptr;
}

std::string CResultCode::Describe(uint32_t code) {
    if (code == kOk)
        return "success";
    if (const char* words = Find(kTransportCodes, code))
        return words;
    if (const char* words = Find(kServiceCodes, code))
        return words;
    if (IsTransport(code))
        return "transport failure " + Hex(code);
    return "unknown result code " + Hex(code);
}
