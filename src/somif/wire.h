// The library's name for the protocol facts: qel::wire is qel::protocol.
#ifndef QEL_SRC_SOMIF_WIRE_H
#define QEL_SRC_SOMIF_WIRE_H

#include "common/protocol.h"

namespace qel {
namespace wire = protocol;
}  // namespace qel

#endif  // QEL_SRC_SOMIF_WIRE_H
