#include "pci_database.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>

namespace qel {
namespace {

const std::size_t kNameOffset = 7;  // tab, 4 digits, 2 blanks
const std::size_t kBlockSize = 1 << 16;

bool IsLineEnd(char c) {
    return c == '\n' || c == '\r';
}

// Whether the kScanWidth bytes at `p` hold a line end followed by anything
// but a tab (reads p[0] to p[kScanWidth]).
typedef char ScanBlock __attribute__((vector_size(16)));
const std::size_t kScanWidth = sizeof(ScanBlock);

bool HasLineStartWithoutTab(const char* p) {
    ScanBlock here;
    ScanBlock next;
    std::memcpy(&here, p, sizeof here);
    std::memcpy(&next, p + 1, sizeof next);
    const ScanBlock hits = (here == '\n') & (next != '\t');
    uint64_t halves[2];
    std::memcpy(halves, &hits, sizeof halves);
    return (halves[0] | halves[1]) != 0;
}

// Four characters as one number that orders as the characters do, so that
// a vendor block, listed in order in the file, needs no sorting.
uint32_t OrderedKey(const char* four) {
    uint32_t key = 0;
    for (int k = 0; k < 4; ++k)
        key = key << 8 | static_cast<unsigned char>(four[k]);
    return key;
}

uint32_t Key(const char* four) {
    uint32_t key;
    std::memcpy(&key, four, sizeof key);
    return key;
}

}  // namespace

std::unique_ptr<PciDatabase> PciDatabase::Load(const std::string& path, int* error) {
    FILE* file = std::fopen(path.c_str(), "rb");
    if (file == nullptr) {
        *error = errno;
        return nullptr;
    }
    std::unique_ptr<PciDatabase> db(new PciDatabase);
    // Sized from the file's length (one byte more, so that the read that
    // fills it also meets the end), the text is read in place with no
    // regrowth; a file that grows meanwhile is read on in blocks.
    struct stat info;
    if (fstat(fileno(file), &info) == 0 && info.st_size > 0)
        db->text_.reserve(static_cast<std::size_t>(info.st_size) + 1);
    std::string& text = db->text_;
    for (;;) {
        const std::size_t used = text.size();
        const std::size_t room = text.capacity() > used ? text.capacity() - used : kBlockSize;
        text.resize(used + room);
        const std::size_t n = std::fread(&text[used], 1, room, file);
        text.resize(used + n);
        if (n < room)
            break;
    }
    std::fclose(file);
    return db;
}

std::size_t PciDatabase::LineEnd(std::size_t pos) const {
    const void* nl = std::memchr(text_.data() + pos, '\n', text_.size() - pos);
    return nl == nullptr
               ? text_.size()
               : static_cast<std::size_t>(static_cast<const char*>(nl) - text_.data()) + 1;
}

// Whether the line [pos, lineEnd) holds `four` at `offset`, compared as
// strncmp compares a line read with getline (the line ends in a NUL).
bool PciDatabase::StartsWith(std::size_t pos, std::size_t lineEnd, std::size_t offset,
                             const std::string& four) const {
    for (std::size_t k = 0; k < four.size(); ++k) {
        const char c = pos + offset + k < lineEnd ? text_[pos + offset + k] : '\0';
        if (c != four[k])
            return false;
        if (c == '\0')
            return true;
    }
    return true;
}

// Indexes the line at `pos` when the vendor search could match it.
void PciDatabase::IndexLine(std::size_t pos) {
    const char first = text_[pos];
    if (first != '\t' && first != '#' && !IsLineEnd(first) && LineEnd(pos) - pos >= 4)
        vendorLines_[Key(text_.data() + pos)].push_back(pos);
}

// Nearly all lines are device and subsystem lines, which start with a tab
// and can never be vendor lines. Sixteen bytes at a time, only a block
// holding a line end that a tab does not follow is looked at byte by byte:
// a few instructions per block instead of a memchr call per line.
std::size_t PciDatabase::NextUntabbedLine(std::size_t pos) const {
    const char* text = text_.data();
    const std::size_t size = text_.size();
    std::size_t k = pos;
    while (k + kScanWidth + 1 <= size && !HasLineStartWithoutTab(text + k))
        k += kScanWidth;
    for (; k + 1 < size; ++k) {
        if (text[k] == '\n' && text[k + 1] != '\t')
            return k + 1;
    }
    return size;
}

void PciDatabase::BuildIndex() {
    for (std::size_t pos = 0; pos < text_.size(); pos = NextUntabbedLine(pos))
        IndexLine(pos);
    indexed_ = true;
}

// The next line at or after `pos` that the vendor search would match.
std::size_t PciDatabase::NextVendorCandidate(std::size_t pos, const std::string& vendor) const {
    // The index holds four-byte keys; a number with a NUL byte matches as
    // strncmp matches, on the bytes before the NUL, so the walk looks for it.
    if (indexed_ && vendor.size() == 4 && vendor.find('\0') == std::string::npos) {
        auto it = vendorLines_.find(Key(vendor.data()));
        if (it == vendorLines_.end())
            return text_.size();
        auto line = std::lower_bound(it->second.begin(), it->second.end(), pos);
        return line == it->second.end() ? text_.size() : *line;
    }
    for (; pos < text_.size(); pos = NextUntabbedLine(pos)) {
        const char first = text_[pos];
        if (first != '\t' && first != '#' && !IsLineEnd(first) &&
            StartsWith(pos, LineEnd(pos), 0, vendor)) {
            return pos;
        }
    }
    return text_.size();
}

// Searches the device lines from `pos`; `*after` is where the vendor search
// goes on (after the line that ended the block).
bool PciDatabase::FindDevice(std::size_t pos, const std::string& device, std::size_t* after,
                             std::string* name) const {
    while (pos < text_.size()) {
        const std::size_t end = LineEnd(pos);
        const char first = text_[pos];
        if (first != '\t' && first != '#' && first != ' ') {
            *after = end;
            return false;
        }
        const bool subsystem = pos + 1 < end && text_[pos + 1] == '\t';
        if (!subsystem && StartsWith(pos, end, 1, device)) {
            DeviceName(pos, end, name);
            return true;
        }
        pos = end;
    }
    *after = text_.size();
    return false;
}

// With the index, each vendor block is walked once and its device lines
// remembered (the first line per number wins, as in the walk).
const PciDatabase::Block& PciDatabase::BlockAfter(std::size_t vendorLine) {
    auto cached = blocks_.find(vendorLine);
    if (cached != blocks_.end())
        return cached->second;
    Block& block = blocks_[vendorLine];
    std::size_t pos = LineEnd(vendorLine);
    for (;;) {
        if (pos >= text_.size()) {
            block.after = text_.size();
            break;
        }
        const std::size_t end = LineEnd(pos);
        const char first = text_[pos];
        if (first != '\t' && first != '#' && first != ' ') {
            block.after = end;
            break;
        }
        const bool subsystem = pos + 1 < end && text_[pos + 1] == '\t';
        if (!subsystem && end - pos >= 5)
            block.devices.push_back({OrderedKey(text_.data() + pos + 1), pos});
        pos = end;
    }
    // The file lists a vendor's devices in order; sort only when it does not.
    if (!std::is_sorted(block.devices.begin(), block.devices.end()))
        std::sort(block.devices.begin(), block.devices.end());
    return block;
}

// The name of the device line at `pos`: from its eighth byte to the line end.
void PciDatabase::DeviceName(std::size_t pos, std::size_t lineEnd, std::string* name) const {
    std::size_t begin = std::min(pos + kNameOffset, lineEnd);
    std::size_t stop = begin;
    while (stop < lineEnd && !IsLineEnd(text_[stop]))
        ++stop;
    name->assign(text_, begin, stop - begin);
}

PciDatabase::Result PciDatabase::Lookup(const std::string& vendor, const std::string& device) {
    Result result;
    const bool fastDevice =
        indexed_ && device.size() == 4 && device.find('\0') == std::string::npos;
    for (std::size_t pos = 0;;) {
        pos = NextVendorCandidate(pos, vendor);
        if (pos >= text_.size())
            return result;
        const std::size_t end = LineEnd(pos);
        result.vendorFound = true;
        result.vendorName = VendorName(text_.data() + pos, end - pos);
        std::size_t after = end;
        if (fastDevice) {
            const Block& block = BlockAfter(pos);
            const DeviceLine first{OrderedKey(device.data()), 0};
            auto it = std::lower_bound(block.devices.begin(), block.devices.end(), first);
            if (it != block.devices.end() && it->number == first.number) {
                result.deviceFound = true;
                DeviceName(it->pos, LineEnd(it->pos), &result.deviceName);
                return result;
            }
            after = block.after;
        } else if (FindDevice(end, device, &after, &result.deviceName)) {
            result.deviceFound = true;
            return result;
        }
        pos = after;
    }
}

std::string PciDatabase::VendorName(const char* line, std::size_t length) {
    std::size_t end = 0;
    while (end < length && !IsLineEnd(line[end]))
        ++end;
    const void* blank = std::memchr(line, ' ', length);
    std::size_t start = blank == nullptr ? 0 : static_cast<const char*>(blank) - line + 2;
    return start >= end ? std::string() : std::string(line + start, end - start);
}

}  // namespace qel
