// Trace signatures of CProviderManageInfo.
#ifndef QEL_SRC_PROVIDER_INFO_PROVIDER_SIGNATURES_H
#define QEL_SRC_PROVIDER_INFO_PROVIDER_SIGNATURES_H

namespace qel {
namespace sig {

constexpr const char kProviderManageInfoConstructor[] =
    "CProviderManageInfo::CProviderManageInfo(std::string)";
constexpr const char kProviderManageInfoDestructor[] =
    "virtual CProviderManageInfo::~CProviderManageInfo()";

}  // namespace sig
}  // namespace qel

#endif  // QEL_SRC_PROVIDER_INFO_PROVIDER_SIGNATURES_H
