// An index of the items of one text by name, so that forward searches
// (getParam, compareItem2) cost a lookup instead of a scan.
//
// The forward-searching readers search again and again from positions of
// one text; each search walks the items from its position to the first
// match or the end, so a field that is missing makes a scan to the end of
// the text, and a reader doing that per element is quadratic. The index is
// built once per text, at the first search (one pass over the item chain
// that starts at the text's beginning: a reader that never searches, such as
// the plan reader on plans in record order, never pays for it), and answers "the first item named N
// at or after item i" with a binary search. It answers only for positions on that chain; any other
// position falls back to the scan, so results never differ.
#ifndef QEL_SRC_CODEC_ITEM_INDEX_H
#define QEL_SRC_CODEC_ITEM_INDEX_H

#include <cstdint>
#include <vector>

#include "item_view.h"

class CSerializedMsg;

namespace qel {

class ItemIndex {
  public:
    explicit ItemIndex(char* text) : text_(text) {}

    // Whether `pos` starts an item of the chain (or is where the chain
    // ends); `*index` is then that item's number.
    bool Locate(const char* pos, std::size_t* index);

    // The first item numbered `index` or later whose name is `key`, or null.
    // Only for an index that Locate gave.
    const ItemView* Find(std::size_t index, const KeyMatch& key);

  private:
    struct Bucket {
        const char* name = nullptr;
        std::size_t length = 0;
        std::vector<uint32_t> items;  // item numbers, ascending
        std::size_t hint = 0;         // where the last search of this name ended
    };
    void Build();
    Bucket* Lookup(const char* name, std::size_t length);
    Bucket& Insert(const char* name, std::size_t length);

    char* text_;  // null once the index is built

    std::vector<ItemView> items_;
    std::vector<const char*> starts_;  // item starts, then the chain's end
    std::vector<Bucket> buckets_;      // open addressing, a power of two
    // Readers mostly search on from just after the item found last: that
    // position is remembered, and each name's search starts where it ended.
    const char* lastNext_ = nullptr;
    std::size_t lastNextIndex_ = 0;
    // Several fields are often searched from one position in turn.
    const char* lastLocated_ = nullptr;
    std::size_t lastLocatedIndex_ = 0;
};

// Makes a codec's forward searches use an index of `text` while it lives.
class IndexScope {
  public:
    IndexScope(CSerializedMsg& codec, char* text);
    ~IndexScope();
    IndexScope(const IndexScope&) = delete;
    IndexScope& operator=(const IndexScope&) = delete;

  private:
    CSerializedMsg& codec_;
    ItemIndex* previous_;
    ItemIndex* index_ = nullptr;
};

// Turns indexing off (for comparisons with plain scanning) or on again.
void SetItemIndexEnabled(bool enabled);

}  // namespace qel

#endif  // QEL_SRC_CODEC_ITEM_INDEX_H
