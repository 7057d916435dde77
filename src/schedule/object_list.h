// Working lists of new property objects in the schedule decoders.
#ifndef QEL_SRC_SCHEDULE_OBJECT_LIST_H
#define QEL_SRC_SCHEDULE_OBJECT_LIST_H

#include <vector>

#include "IWbemClassObject.h"

namespace qel {

typedef std::vector<IWbemClassObject*> ObjectList;

// Frees the objects of a list that never reached a tree; set `list` to null
// once the list has been handed over.
struct ListGuard {
    ObjectList* list;
    ~ListGuard() {
        if (list == nullptr)
            return;
        for (IWbemClassObject* object : *list)
            delete object;
    }
};

}  // namespace qel

#endif  // QEL_SRC_SCHEDULE_OBJECT_LIST_H
