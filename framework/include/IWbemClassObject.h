// IWbemClassObject: the property bag that WBEM-style callers exchange with the
// SOM client library.
//
// An object is an ordered list of (name, boost::any) entries; several entries
// may share a name, and a lookup by name answers with the last of them, so a
// later item stands on top of an earlier one. The Set... writers do not touch
// the object: they append one item of the flat wire text to `out` and are
// members only so that codecs can call them on a write target.
//
// Ownership. Pushing a value that holds an IWbemClassObject*, a
// std::vector<IWbemClassObject*> or a std::vector<IWbemClassObject*>* hands
// those objects (and, for the pointer form, the vector itself) to the
// receiving object, whose destructor deletes them; the objects are looked up
// when the holder is destroyed, so elements added to a held vector later are
// owned too. Release() on an object that another object holds only gives up
// the caller's claim; on an object that nobody holds it deletes the object.
// boost::shared_ptr entries manage themselves. Deleting (or releasing) the top
// object of a tree therefore frees the whole tree. An object must be held by
// at most one holder.
//
// Not thread-safe: one object is used by one thread at a time.
#ifndef QEL_IWBEMCLASSOBJECT_H
#define QEL_IWBEMCLASSOBJECT_H

#include <cstddef>
#include <list>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include <boost/any.hpp>

#include "QelExport.h"

// Call context of a WBEM call; accepted by the library and never read.
class QEL_FRAMEWORK_API IWbemContext {
  public:
    virtual ~IWbemContext();
};

// Asynchronous call result of a WBEM call; accepted and never read.
class QEL_FRAMEWORK_API IWbemCallResult {
  public:
    virtual ~IWbemCallResult();
};

class QEL_FRAMEWORK_API IWbemClassObject {
  public:
    typedef std::pair<std::string, boost::any> Entry;
    typedef std::list<Entry> EntryList;
    typedef EntryList::iterator iterator;
    typedef EntryList::const_iterator const_iterator;

    IWbemClassObject();
    virtual ~IWbemClassObject();
    IWbemClassObject(const IWbemClassObject&) = delete;
    IWbemClassObject& operator=(const IWbemClassObject&) = delete;

    // Gives up the caller's claim: deletes the object unless another object
    // holds it. The pointer must not be used by the caller afterwards unless
    // it is held elsewhere.
    void Release();

    // Appends (name, value) at the end; takes over nested objects (see above).
    void push(std::string name, boost::any value);

    // Appends (name, value) with both built in place in the new entry, for a
    // value that can hold no nested object (a string, number, flag or string
    // array): nothing to take over and nothing copied on the way in. Decoders
    // use it for every plain item.
    template <typename T>
    void pushPlain(const char* name, std::size_t nameLength, T&& value) {
        typedef typename std::decay<T>::type Value;
        static_assert(!std::is_same<Value, boost::any>::value &&
                          !std::is_same<Value, IWbemClassObject*>::value &&
                          !std::is_same<Value, std::vector<IWbemClassObject*>>::value &&
                          !std::is_same<Value, std::vector<IWbemClassObject*>*>::value,
                      "values that may hold objects go through push()");
        entries_.emplace_back(std::piecewise_construct, std::forward_as_tuple(name, nameLength),
                              std::forward_as_tuple(std::forward<T>(value)));
    }

    iterator getIterator() { return entries_.begin(); }
    bool hasNext(iterator it) const { return it != entries_.end(); }
    const_iterator begin() const { return entries_.begin(); }
    const_iterator end() const { return entries_.end(); }
    iterator begin() { return entries_.begin(); }
    iterator end() { return entries_.end(); }
    std::size_t size() const { return entries_.size(); }
    bool empty() const { return entries_.empty(); }

    // The value of the last entry called `name`, or null.
    const boost::any* Get(const std::string& name) const;
    boost::any* Get(const std::string& name);

    // The last entry called `name` when it holds a T, else null.
    template <typename T>
    const T* GetAs(const std::string& name) const {
        const boost::any* value = Get(name);
        return value == nullptr ? nullptr : boost::any_cast<T>(value);
    }

    // Whether another object holds this one.
    bool IsHeld() const { return held_; }

    // Item writers: each appends one item of the wire text to `out`.
    void SetString(std::string& out, std::string name, std::string value);
    void SetInt(std::string& out, std::string name, int value);
    void SetUInt(std::string& out, std::string name, unsigned int value);
    void SetLong(std::string& out, std::string name, long value);
    void SetULong(std::string& out, std::string name, unsigned long value);
    void SetBool(std::string& out, std::string name, bool value);
    void SetStringArray(std::string& out, std::string name, std::vector<std::string> values);
    // Only the "class" / "class[]" item; the caller writes the nested entries.
    void SetClass(std::string& out, std::string name, const IWbemClassObject& obj);
    void SetClassArray(std::string& out, std::string name, std::vector<IWbemClassObject*>* objs);

    // Path-prefixed writers: the item's name is prefix + name.
    void SetString(std::string& out, std::string prefix, std::string name, std::string value);
    void SetInt(std::string& out, std::string prefix, std::string name, int value);
    void SetBool(std::string& out, std::string prefix, std::string name, bool value);

  private:
    void TakeOver(const boost::any& value);

    EntryList entries_;
    bool held_ = false;
};

#endif  // QEL_IWBEMCLASSOBJECT_H
