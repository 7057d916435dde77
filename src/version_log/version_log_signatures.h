// Trace signatures of CVersionUpLog.
#ifndef QEL_SRC_VERSION_LOG_VERSION_LOG_SIGNATURES_H
#define QEL_SRC_VERSION_LOG_VERSION_LOG_SIGNATURES_H

namespace qel {
namespace sig {

constexpr const char kQelVersionListReader[] =
    "void CVersionUpLog::toObject(char*, std::vector<CVELMORA_QelVersionInfo, "
    "std::allocator<CVELMORA_QelVersionInfo> >&)";
constexpr const char kUpdatePlansListReader[] =
    "void CVersionUpLog::toObject(char*, std::vector<CVELMORA_UpdatePlans, "
    "std::allocator<CVELMORA_UpdatePlans> >&)";
constexpr const char kVersionUpdateLogReader[] =
    "void CVersionUpLog::toObject(char*, std::vector<CVELMORA_VersionUpdateLog, "
    "std::allocator<CVELMORA_VersionUpdateLog> >&)";

}  // namespace sig
}  // namespace qel

#endif  // QEL_SRC_VERSION_LOG_VERSION_LOG_SIGNATURES_H
