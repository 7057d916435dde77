// The provider codecs name their items as qel::pm::k...; the names
// themselves live in the protocol header.
#ifndef QEL_SRC_PROVIDER_INFO_PROVIDER_FIELDS_H
#define QEL_SRC_PROVIDER_INFO_PROVIDER_FIELDS_H

#include "common/protocol.h"

namespace qel {
namespace pm {
using namespace protocol::field;
}  // namespace pm
}  // namespace qel

#endif  // QEL_SRC_PROVIDER_INFO_PROVIDER_FIELDS_H
