// The exchange of the list queries whose replies fit an 8 KiB buffer
// (update plans, installed versions): decoded only when not negative.
#ifndef QEL_SRC_SOMIF_LIST_EXCHANGE_H
#define QEL_SRC_SOMIF_LIST_EXCHANGE_H

#include <memory>
#include <string>
#include <vector>

#include "CSomIf.h"
#include "CVersionUpLog.h"
#include "wire.h"

namespace qel {

template <class Record>
int ExchangeSmallList(CSomIf& som, const std::string& traceName, const char* method,
                      const std::string& className, std::string body, std::vector<Record>& list) {
    std::unique_ptr<char[]> buffer(new char[wire::kSmallReplyBufferSize]);
    buffer[0] = '\0';
    int rc = som.TransMessage(method, className, body, buffer.get(), wire::kSmallReplyBufferSize);
    if (!wire::IsNegative(rc)) {
        CVersionUpLog codec(traceName);
        codec.toObject(buffer.get() + som.getSpecificPos(buffer.get()), list);
    }
    return rc;
}

}  // namespace qel

#endif  // QEL_SRC_SOMIF_LIST_EXCHANGE_H
