// The PCI ID database in memory, looked up with exactly the rules of the
// line-by-line search: the first vendor line whose first four characters
// are the vendor number, then that vendor's device lines (a line that does
// not start with a tab, "#" or a blank ends the block, two-tab subsystem
// lines are skipped), and when the device is not found, the search goes on
// after the line that ended the block.
//
// The file is read whole, in place. Without an index a lookup walks the
// text from its start; with one (built in one pass, for naming many devices)
// it jumps to the candidate vendor lines and remembers each vendor block's
// device lines, so naming n devices costs one pass plus n lookups.
#ifndef QEL_SRC_DISCOVERY_PCI_DATABASE_H
#define QEL_SRC_DISCOVERY_PCI_DATABASE_H

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace qel {

class PciDatabase {
  public:
    // Reads the file; null with `*error` = errno when it cannot be opened.
    static std::unique_ptr<PciDatabase> Load(const std::string& path, int* error);

    // Builds the vendor index (one pass over the lines).
    void BuildIndex();

    struct Result {
        bool vendorFound = false;
        std::string vendorName;  // of the last matching vendor line
        bool deviceFound = false;
        std::string deviceName;
    };
    // `vendor` and `device`: 4 lower-case characters each.
    Result Lookup(const std::string& vendor, const std::string& device);

    // The vendor name of a vendor line (up to its line end).
    static std::string VendorName(const char* line, std::size_t length);

  private:
    // A vendor block's device lines, sorted by number and then by position,
    // so the first line of a number comes first. Names are read from the
    // text when a device is found: most lines of a large block are never
    // asked for, and copying them all cost more than the whole lookup.
    struct DeviceLine {
        uint32_t number;
        std::size_t pos;
        bool operator<(const DeviceLine& other) const {
            return number != other.number ? number < other.number : pos < other.pos;
        }
    };
    struct Block {
        std::size_t after = 0;  // where the search goes on when the device is missing
        std::vector<DeviceLine> devices;
    };

    std::size_t LineEnd(std::size_t pos) const;
    std::size_t NextUntabbedLine(std::size_t pos) const;
    void IndexLine(std::size_t pos);
    bool StartsWith(std::size_t pos, std::size_t lineEnd, std::size_t offset,
                    const std::string& four) const;
    std::size_t NextVendorCandidate(std::size_t pos, const std::string& vendor) const;
    const Block& BlockAfter(std::size_t vendorLine);
    bool FindDevice(std::size_t pos, const std::string& device, std::size_t* after,
                    std::string* name) const;
    void DeviceName(std::size_t pos, std::size_t lineEnd, std::string* name) const;

    std::string text_;
    bool indexed_ = false;
    std::unordered_map<uint32_t, std::vector<std::size_t>> vendorLines_;
    std::unordered_map<std::size_t, Block> blocks_;
};

}  // namespace qel

#endif  // QEL_SRC_DISCOVERY_PCI_DATABASE_H
