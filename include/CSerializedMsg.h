// CSerializedMsg: the codec between property objects and the SOM service's
// item text, and the base class of every typed codec.
//
// The text is a flat run of items "tag;name;value;" (tags "string", "int",
// "long", "ulong", "bool", "string[]", "class", "class[]"); a ";" inside a
// value travels as "%!@" and string-array elements are joined by "!#".
// Element paths are written "Array[i]/Field".
//
// The scanners take a position (char*) into a NUL-terminated body and return
// a position into the same buffer, or null when nothing more can be read.
// They never copy the body, never write into it and never read past its NUL;
// malformed text stops a reader at the last complete item and never throws.
// Writers append to the caller's string and never clear it; decoders append
// entries to the caller's object and never clear it. Nested objects that a
// decoder creates belong to the object they are added to.
//
// A codec object holds only its trace name: one object may encode and decode
// any number of bodies in turn, and separate objects may be used from
// separate threads.
#ifndef QEL_CSERIALIZEDMSG_H
#define QEL_CSERIALIZEDMSG_H

#include <string>
#include <vector>

#include "IWbemClassObject.h"
#include "QelExport.h"
#include "QelTypes.h"

namespace qel {
class ItemIndex;
class IndexScope;
}  // namespace qel

class QEL_SOMIF_API CSerializedMsg {
  public:
    explicit CSerializedMsg(std::string traceName);
    virtual ~CSerializedMsg();

    // Appends the entries of `text` (from its start) to `obj`. Items after the
    // first "class" or "class[]" item go into one nested object, which is
    // appended to `obj` at the end under that item's name.
    virtual void String2IWbem(char* text, IWbemClassObject& obj);

    // Appends the items of every entry of `obj`, in order, to `out`.
    virtual void IWbem2String(IWbemClassObject& obj, std::string& out);

    // Appends the value of every item of `text`, whatever its tag.
    virtual void String2Array(char* text, std::vector<std::string>& values);

    // Appends the elements of the run of "string[]" items at the start of
    // `text`; stops at the first item of another tag.
    virtual void StringArray2Array(char* text, std::vector<std::string>& values);

    // --- Item scanners -----------------------------------------------------

    // Reads the item at `pos`; returns the position after its third ";", or
    // null when `pos` is null or the item is incomplete (then `type` and
    // `name` hold what could be read and `value` is untouched).
    char* getItem(char* pos, std::string& type, std::string& name, std::string& value);
    // As above; the value parsed as a signed decimal truncated to 32 bits.
    char* getItem(char* pos, std::string& type, std::string& name, int& value);

    // Reads exactly one item at `pos` and matches its name against `key` (a
    // key with "/" is a path: the item's name is compared with its last
    // component). Match: stores the value and returns the next position.
    // No match: returns `pos` unchanged. Nothing readable: null.
    char* compareItem(char* pos, const char* key, std::string& value);
    // `value` becomes false first, and true only for a matched "true".
    char* compareItem(char* pos, const char* key, bool& value);
    // `value` becomes the matched number, 0 when the item has another name.
    char* compareItem(char* pos, const char* key, int& value);
    // Appends (key, matched text) to `obj`; ("key", "") when not matched.
    char* compareItem(char* pos, const char* key, IWbemClassObject& obj);
    char* compareItem(char* pos, const std::string& prefix, const char* key, std::string& value);
    char* compareItem(char* pos, const std::string& prefix, const char* key, bool& value);
    char* compareItem(char* pos, const std::string& prefix, const char* key, int& value);
    char* compareItem(char* pos, const std::string& prefix, const char* key, IWbemClassObject& obj);

    // Searches forward from `pos` (path rule as compareItem); true and
    // `value` set when found.
    bool compareItem2(char* pos, const char* key, std::string& value);

    // Searches forward for an item named exactly `key`: its value and the
    // position after it; "" and null when the text runs out.
    char* getParam(char* pos, const char* key, std::string& value);
    // Reads one item named exactly `key`: its value and the next position;
    // otherwise "" and null.
    char* getParam2(char* pos, const char* key, std::string& value);

    // --- Arrays and single items -------------------------------------------

    // name "[" index "]/", the path prefix of an array element.
    std::string getClassArrayName(const char* name, int index);

    // Reads the string array prefix + key at `pos`, appending its elements.
    // When the item at `pos` is another one, `values` is emptied and `pos`
    // returned.
    char* setStringArray(char* pos, const std::string& prefix, const char* key,
                         std::vector<std::string>& values);

    // The value of the first item of `text`; "" when it cannot be read.
    std::string getString(const char* text);
    // Whether the value of the first item of `text` is "1".
    bool getBool(const char* text);

  protected:
    const std::string& traceName() const { return traceName_; }

  private:
    friend class qel::IndexScope;

    std::string traceName_;
    // While a reader runs over one text: an index of its items by name that
    // the forward searches use (see src/codec/item_index.h).
    qel::ItemIndex* searchIndex_ = nullptr;
};

#endif  // QEL_CSERIALIZEDMSG_H
