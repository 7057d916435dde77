// Visitors that write and read the typed records of record_fields.h.
#ifndef QEL_SRC_COMMON_RECORD_CODEC_H
#define QEL_SRC_COMMON_RECORD_CODEC_H

#include <string>

#include "CSerializedMsg.h"
#include "IWbemClassObject.h"
#include "QelItemText.h"
#include "codec/item_view.h"
#include "record_fields.h"

namespace qel {

// Appends one item per field through the item writers of `target`.
class ItemWriter {
  public:
    explicit ItemWriter(std::string& out) : out_(out) {}
    void String(const char* name, const std::string& value) {
        item::AppendStringItem(out_, name, value);
    }
    void Int(const char* name, int value) { item::AppendIntItem(out_, name, value); }
    void UInt(const char* name, unsigned int value) {
        item::AppendIntItem(out_, name, value, item::kTagUInt);
    }
    void Bool(const char* name, bool value) { item::AppendBoolItem(out_, name, value); }

  private:
    std::string& out_;
};

// Reads one item per field, each at the position the previous read returned
// (compareItem: a missing item is skipped without moving on). The reads are
// inline, so the field names of record_fields.h are measured at compile time.
class ChainReader {
  public:
    explicit ChainReader(char* pos) : pos_(pos) {}
    QEL_INLINE_READER void String(const char* name, std::string& value) {
        pos_ = ReadItem(pos_, name, value);
    }
    QEL_INLINE_READER void Int(const char* name, int& value) { pos_ = ReadItem(pos_, name, value); }
    // The number is stored into the unsigned field as its 32-bit pattern.
    QEL_INLINE_READER void UInt(const char* name, unsigned int& value) {
        int number = static_cast<int>(value);
        pos_ = ReadItem(pos_, name, number);
        value = static_cast<unsigned int>(number);
    }
    QEL_INLINE_READER void Bool(const char* name, bool& value) {
        pos_ = ReadItem(pos_, name, value);
    }
    // Reads an item whose value is not kept (a section's "class" item).
    ChainReader& Skip(const char* name) {
        pos_ = CompareOne(
            pos_, name, [](const ItemView&) {}, [] {});
        return *this;
    }
    char* pos() const { return pos_; }

  private:
    char* pos_;
};

}  // namespace qel

#endif  // QEL_SRC_COMMON_RECORD_CODEC_H
