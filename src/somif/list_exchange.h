// The exchange of the list queries whose replies are cut at 8 KiB (update
// plans, installed versions): decoded only when not negative.
#ifndef QEL_SRC_SOMIF_LIST_EXCHANGE_H
#define QEL_SRC_SOMIF_LIST_EXCHANGE_H

#include <string>
#include <vector>

#include "CVersionUpLog.h"
#include "exchange.h"

namespace qel {
namespace somif {

template <class Record>
int ExchangeSmallList(CSomIf& som, const std::string& traceName, const char* method,
                      const std::string& className, const std::string& body,
                      std::vector<Record>& list) {
    const Exchanged exchanged = Exchange(som, traceName, method, className, body, kSmallListRules);
    if (!wire::IsNegative(exchanged.rc)) {
        CVersionUpLog codec(traceName);
        codec.toObject(exchanged.reply.body, list);
    }
    return exchanged.rc;
}

}  // namespace somif
}  // namespace qel

#endif  // QEL_SRC_SOMIF_LIST_EXCHANGE_H
