// Working lists of new property objects in the schedule decoders.
#ifndef QEL_SRC_SCHEDULE_OBJECT_LIST_H
#define QEL_SRC_SCHEDULE_OBJECT_LIST_H

#include <memory>
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

// Appends a new empty object to `list` and returns it; the list owns it
// from then on, and nothing leaks if growing the list throws.
inline IWbemClassObject* AppendNew(ObjectList& list) {
    std::unique_ptr<IWbemClassObject> object(new IWbemClassObject);
    list.push_back(object.get());
    return object.release();
}

}  // namespace qel

#endif  // QEL_SRC_SCHEDULE_OBJECT_LIST_H
