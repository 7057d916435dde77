// Result codes of the reference service, shared by somd and somctl. The
// constants live in the framework's CResultCode; these names forward to them.
#ifndef QEL_TOOLS_COMMON_SERVICE_CODES_H
#define QEL_TOOLS_COMMON_SERVICE_CODES_H

#include <cstdint>
#include <string>

#include "CResultCode.h"

namespace somd {

constexpr uint32_t kAuthorityHeld = CResultCode::kAuthorityHeld;
constexpr uint32_t kNotAuthorityHolder = CResultCode::kNotAuthorityHolder;
constexpr uint32_t kUnknownMethod = CResultCode::kUnknownMethod;
constexpr uint32_t kBadRequest = CResultCode::kBadRequest;
constexpr uint32_t kBusy = CResultCode::kBusy;
constexpr uint32_t kUnknownParameter = CResultCode::kUnknownParameter;
constexpr uint32_t kStateNotSaved = CResultCode::kStateNotSaved;

inline std::string DescribeServiceCode(uint32_t code) {
    return CResultCode::Describe(code);
}

}  // namespace somd

#endif  // QEL_TOOLS_COMMON_SERVICE_CODES_H
