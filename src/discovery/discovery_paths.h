// Fixed files of device discovery, and the trace signatures of its operations.
#ifndef QEL_SRC_DISCOVERY_DISCOVERY_PATHS_H
#define QEL_SRC_DISCOVERY_DISCOVERY_PATHS_H

#include "common/protocol.h"

namespace qel {
namespace discovery {

constexpr const char kInventoryFile[] = "/opt/velmora/qel/etc/devices.tmp";
constexpr const char kPciIdsFile[] = "/usr/share/hwdata/pci.ids";
using protocol::kMofFile;  // shared with somctl
constexpr const char kProviderDir[] = "/opt/velmora/qel/provider";

// Positions of the PCI numbers in a device identifier.
constexpr unsigned kVendorOffset = 8;
constexpr unsigned kDeviceOffset = 13;
constexpr unsigned kIdDigits = 4;
constexpr unsigned kMinimumIdLength = kDeviceOffset + kIdDigits;  // 17
// Offset of the name in a database device line: tab, 4 digits, 2 blanks.
constexpr unsigned kDeviceNameOffset = 7;

constexpr const char kBmcId[] = "Bmc";
constexpr const char kBmcName[] = "BMC";
constexpr const char kFirmwareName[] = "BIOS/EFI";

}  // namespace discovery

namespace sig {

constexpr const char kGetDeviceName[] = "void CSomIf::GetDeviceName(CVelmora_DeviceInfo&)";
constexpr const char kReadDeviceInfo[] =
    "bool CSomIf::readDeviceInfo(std::list<std::basic_string<char, std::char_traits<char>, "
    "std::allocator<char> >, std::allocator<std::basic_string<char, std::char_traits<char>, "
    "std::allocator<char> > > >&)";
constexpr const char kMsgFileNotFound[] = "file (%s) not found";
constexpr const char kGetDeviceService[] = "HRESULT CSomIf::GetDeviceService(strpairvect_t&)";
constexpr const char kGetToolService[] = "HRESULT CSomIf::GetToolService(strpairvect_t&)";
constexpr const char kIsDeviceAlive[] = "bool CSomIf::isDeviceAlive(CMofContents)";
// The whole line: signature, database path, system error number. A macro,
// not a constant, so that the compiler checks it against its arguments.
#define QEL_OPEN_FAILED_LINE "%s %s file open failed (%d)"

}  // namespace sig
}  // namespace qel

#endif  // QEL_SRC_DISCOVERY_DISCOVERY_PATHS_H
