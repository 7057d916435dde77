// Names devices from the PCI ID database with GetDeviceName's rules and
// traces. One namer loads the database once, so naming many devices (the
// provider query) reads it once; with `batch` it also builds the index.
#ifndef QEL_SRC_DISCOVERY_DEVICE_NAMER_H
#define QEL_SRC_DISCOVERY_DEVICE_NAMER_H

#include <memory>
#include <string>

#include "ProviderManageRecords.h"
#include "pci_database.h"

namespace qel {
namespace discovery {

class DeviceNamer {
  public:
    DeviceNamer(const std::string& traceName, bool batch) : traceName_(traceName), batch_(batch) {}
    void Name(CVelmora_DeviceInfo& device);

  private:
    PciDatabase* Database();

    const std::string traceName_;
    const bool batch_;
    bool loaded_ = false;
    int error_ = 0;
    std::string path_;
    std::unique_ptr<PciDatabase> db_;
};

}  // namespace discovery
}  // namespace qel

#endif  // QEL_SRC_DISCOVERY_DEVICE_NAMER_H
