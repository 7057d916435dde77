#include "pci_database.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace qel {
namespace {

const std::size_t kNameOffset = 7;  // tab, 4 digits, 2 blanks
const std::size_t kBlockSize = 1 << 16;

bool IsLineEnd(char c) {
    return c == '\n' || c == '\r';
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
    char block[kBlockSize];
    std::size_t n;
    while ((n = std::fread(block, 1, sizeof block, file)) > 0)
        db->text_.append(block, n);
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

void PciDatabase::BuildIndex() {
    for (std::size_t pos = 0; pos < text_.size();) {
        const std::size_t end = LineEnd(pos);
        const char first = text_[pos];
        if (first != '\t' && first != '#' && !IsLineEnd(first) && end - pos >= 4) {
            vendorLines_[Key(text_.data() + pos)].push_back(pos);
        }
        pos = end;
    }
    indexed_ = true;
}

// The next line at or after `pos` that the vendor search would match.
std::size_t PciDatabase::NextVendorCandidate(std::size_t pos, const std::string& vendor) const {
    if (indexed_) {
        if (vendor.size() != 4 || vendor.find('\0') != std::string::npos)
            return text_.size();
        auto it = vendorLines_.find(Key(vendor.data()));
        if (it == vendorLines_.end())
            return text_.size();
        auto line = std::lower_bound(it->second.begin(), it->second.end(), pos);
        return line == it->second.end() ? text_.size() : *line;
    }
    while (pos < text_.size()) {
        const std::size_t end = LineEnd(pos);
        const char first = text_[pos];
        if (first != '\t' && first != '#' && !IsLineEnd(first) && StartsWith(pos, end, 0, vendor)) {
            return pos;
        }
        pos = end;
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
            std::size_t begin = std::min(pos + kNameOffset, end);
            std::size_t stop = begin;
            while (stop < end && !IsLineEnd(text_[stop]))
                ++stop;
            name->assign(text_, begin, stop - begin);
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
        if (!subsystem && end - pos >= 5) {
            const uint32_t key = Key(text_.data() + pos + 1);
            if (block.devices.find(key) == block.devices.end()) {
                std::size_t begin = std::min(pos + kNameOffset, end);
                std::size_t stop = begin;
                while (stop < end && !IsLineEnd(text_[stop]))
                    ++stop;
                block.devices.emplace(key, text_.substr(begin, stop - begin));
            }
        }
        pos = end;
    }
    return block;
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
            auto it = block.devices.find(Key(device.data()));
            if (it != block.devices.end()) {
                result.deviceFound = true;
                result.deviceName = it->second;
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
