// CResultCode: names for the result codes that a SOM call can return, and
// words for any of them.
//
// Two families meet in one HRESULT: the transport's own codes (the request
// could not be sent, no reply came), all within kTransportFamilyMask, and the
// codes that the reference service answers with. Describe() turns any code
// into a sentence for an operator; a code known to neither family reads as
// its hexadecimal value ("0x%08X").
#ifndef QEL_CRESULTCODE_H
#define QEL_CRESULTCODE_H

#include <cstdint>
#include <string>

#include "QelExport.h"

class QEL_FRAMEWORK_API CResultCode {
  public:
    static constexpr uint32_t kOk = 0x00000000u;

    // The transport family.
    static constexpr uint32_t kTransportFamilyMask = 0x80080000u;
    static constexpr uint32_t kNotSent = 0x80081001u;  // no connection, or the send failed
    static constexpr uint32_t kNoReply = 0x80081101u;  // sent, but no whole reply came

    // The reference service's own codes.
    static constexpr uint32_t kAuthorityHeld = 0x8000A001u;       // another AppKey holds it
    static constexpr uint32_t kNotAuthorityHolder = 0x8000A002u;  // release by a non-holder
    static constexpr uint32_t kUnknownMethod = 0x8000A003u;       // class or method not served
    static constexpr uint32_t kBadRequest = 0x8000A004u;          // a body that cannot be read
    static constexpr uint32_t kBusy = 0x8000A005u;                // a bulk run is in progress
    static constexpr uint32_t kUnknownParameter = 0x8000A006u;    // alive-monitor name not set
    static constexpr uint32_t kStateNotSaved = 0x8000A007u;       // the state file not written
    static constexpr uint32_t kNotRecorded =
        0x8000A008u;  // a replaying service has no such request

    // True for the transport's codes: the service's answer never arrived.
    static bool IsTransport(uint32_t code);
    // True for the codes that the reference service answers with.
    static bool IsService(uint32_t code);
    // A sentence for any code, e.g. "the request could not be sent".
    static std::string Describe(uint32_t code);
};

#endif  // QEL_CRESULTCODE_H
