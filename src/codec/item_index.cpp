#include "item_index.h"

#include <algorithm>
#include <atomic>
#include <cstring>

#include "CSerializedMsg.h"

namespace qel {
namespace {

std::atomic<bool> g_enabled{true};
// Texts smaller than this are scanned: building an index would cost more.
const std::size_t kSmallText = 512;
// Items of the replies that get indexed are rarely shorter.
const std::size_t kBytesPerItem = 24;

std::size_t Hash(const char* name, std::size_t length) {
    std::size_t h = 1469598103934665603ULL;
    for (std::size_t i = 0; i < length; ++i) {
        h = (h ^ static_cast<unsigned char>(name[i])) * 1099511628211ULL;
    }
    return h;
}

}  // namespace

void SetItemIndexEnabled(bool enabled) {
    g_enabled = enabled;
}

void ItemIndex::Build() {
    char* const text = text_;
    text_ = nullptr;
    buckets_.resize(64);
    // Sized from the text at about one item per kBytesPerItem: regrowing a
    // large vector item by item meant several large allocations per text.
    const std::size_t expected = std::strlen(text) / kBytesPerItem + 1;
    items_.reserve(expected);
    starts_.reserve(expected + 1);
    char* pos = text;
    for (;;) {
        ItemView item;
        ScanItem(pos, item);
        if (!item.complete())
            break;
        const uint32_t number = static_cast<uint32_t>(items_.size());
        items_.push_back(item);
        starts_.push_back(pos);
        Insert(item.name, item.nameLength).items.push_back(number);
        pos = item.next;
    }
    starts_.push_back(pos);
}

ItemIndex::Bucket& ItemIndex::Insert(const char* name, std::size_t length) {
    for (;;) {
        const std::size_t mask = buckets_.size() - 1;
        std::size_t slot = Hash(name, length) & mask;
        std::size_t used = 0;
        for (;; slot = (slot + 1) & mask, ++used) {
            Bucket& bucket = buckets_[slot];
            if (bucket.name == nullptr)
                break;
            if (bucket.length == length && std::memcmp(bucket.name, name, length) == 0) {
                return bucket;
            }
        }
        // Keep the table at most half full; grow and retry.
        std::size_t filled = 0;
        for (const Bucket& bucket : buckets_)
            filled += bucket.name != nullptr;
        if ((filled + 1) * 2 <= buckets_.size()) {
            Bucket& bucket = buckets_[slot];
            bucket.name = name;
            bucket.length = length;
            return bucket;
        }
        std::vector<Bucket> old;
        old.swap(buckets_);
        buckets_.resize(old.size() * 2);
        for (Bucket& moved : old) {
            if (moved.name == nullptr)
                continue;
            std::size_t to = Hash(moved.name, moved.length) & (buckets_.size() - 1);
            while (buckets_[to].name != nullptr)
                to = (to + 1) & (buckets_.size() - 1);
            buckets_[to] = std::move(moved);
        }
    }
}

ItemIndex::Bucket* ItemIndex::Lookup(const char* name, std::size_t length) {
    const std::size_t mask = buckets_.size() - 1;
    for (std::size_t slot = Hash(name, length) & mask;; slot = (slot + 1) & mask) {
        Bucket& bucket = buckets_[slot];
        if (bucket.name == nullptr)
            return nullptr;
        if (bucket.length == length && std::memcmp(bucket.name, name, length) == 0) {
            return &bucket;
        }
    }
}

bool ItemIndex::Locate(const char* pos, std::size_t* index) {
    if (text_ != nullptr)
        Build();
    if (pos == lastNext_ && pos != nullptr) {
        *index = lastNextIndex_;
        return true;
    }
    if (pos == lastLocated_ && pos != nullptr) {
        *index = lastLocatedIndex_;
        return true;
    }
    auto it = std::lower_bound(starts_.begin(), starts_.end(), pos);
    if (it == starts_.end() || *it != pos)
        return false;
    *index = static_cast<std::size_t>(it - starts_.begin());
    lastLocated_ = pos;
    lastLocatedIndex_ = *index;
    return true;
}

const ItemView* ItemIndex::Find(std::size_t index, const KeyMatch& key) {
    Bucket* bucket = Lookup(key.text, key.length);
    if (bucket == nullptr)
        return nullptr;
    const std::vector<uint32_t>& list = bucket->items;
    const uint32_t wanted = static_cast<uint32_t>(index);
    // Gallop forward from where this name's last search ended; search the
    // front part only when the wanted item lies before it.
    std::size_t low = 0;
    std::size_t high = list.size();
    std::size_t hint = bucket->hint < list.size() ? bucket->hint : list.size();
    if (hint == 0 || list[hint - 1] < wanted) {
        low = hint;
        std::size_t step = 1;
        while (low + step < list.size() && list[low + step] < wanted)
            step *= 2;
        high = std::min(list.size(), low + step + 1);
    } else {
        high = hint;
    }
    auto it = std::lower_bound(list.begin() + low, list.begin() + high, wanted);
    bucket->hint = static_cast<std::size_t>(it - list.begin());
    if (it == list.end())
        return nullptr;
    const ItemView* item = &items_[*it];
    lastNext_ = item->next;
    lastNextIndex_ = *it + 1;
    return item;
}

IndexScope::IndexScope(CSerializedMsg& codec, char* text)
    : codec_(codec), previous_(codec.searchIndex_) {
    if (text == nullptr || !g_enabled || strnlen(text, kSmallText) < kSmallText)
        return;
    index_ = new ItemIndex(text);
    codec_.searchIndex_ = index_;
}

IndexScope::~IndexScope() {
    codec_.searchIndex_ = previous_;
    delete index_;
}

}  // namespace qel
