// Trace signatures of CSomIf's operations.
#ifndef QEL_SRC_SOMIF_SOMIF_SIGNATURES_H
#define QEL_SRC_SOMIF_SOMIF_SIGNATURES_H

namespace qel {
namespace sig {

constexpr const char kConstructor[] = "CSomIf::CSomIf(std::string)";
constexpr const char kDestructor[] = "virtual CSomIf::~CSomIf()";
constexpr const char kGetMsgHead[] =
    "std::string CSomIf::getMsgHead(std::string, const char*, uint32_t)";
constexpr const char kGetResult[] = "HRESULT CSomIf::getResult(int, const char*)";
constexpr const char kGetReturnValue[] = "HRESULT CSomIf::GetReturnValue(std::string)";

}  // namespace sig
}  // namespace qel

#endif  // QEL_SRC_SOMIF_SOMIF_SIGNATURES_H
