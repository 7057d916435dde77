// Result codes of the reference service (its own, never of the transport
// family), shared by somd and somctl so that the tool can explain them.
#ifndef QEL_TOOLS_COMMON_SERVICE_CODES_H
#define QEL_TOOLS_COMMON_SERVICE_CODES_H

#include <cstdint>

namespace somd {

constexpr uint32_t kAuthorityHeld = 0x8000A001u;       // another AppKey holds the authority
constexpr uint32_t kNotAuthorityHolder = 0x8000A002u;  // release by a key that does not hold it
constexpr uint32_t kUnknownMethod = 0x8000A003u;       // class or method not served
constexpr uint32_t kBadRequest = 0x8000A004u;          // a request body that cannot be read
constexpr uint32_t kBusy = 0x8000A005u;                // a bulk run is in progress
constexpr uint32_t kUnknownParameter = 0x8000A006u;    // alive-monitor parameter not set
constexpr uint32_t kStateNotSaved = 0x8000A007u;       // the state file could not be written

inline const char* DescribeServiceCode(uint32_t code) {
    switch (code) {
        case kAuthorityHeld:
            return "the operating authority is held by another application key";
        case kNotAuthorityHolder:
            return "this application key does not hold the operating authority";
        case kUnknownMethod:
            return "the service does not serve this class or method";
        case kBadRequest:
            return "the service could not read the request";
        case kBusy:
            return "a download, update or rollback is already running";
        case kUnknownParameter:
            return "no such alive-monitor parameter";
        case kStateNotSaved:
            return "the service could not save its state";
        default:
            return "service error";
    }
}

}  // namespace somd

#endif  // QEL_TOOLS_COMMON_SERVICE_CODES_H
