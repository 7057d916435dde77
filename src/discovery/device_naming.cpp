// CSomIf: the device inventory and device naming from the PCI ID database.
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include "CFileUtility.h"
#include "CSomIf.h"
#include "CStringUtil.h"
#include "CTraceUtility.h"
#include "common/trace.h"
#include "device_namer.h"
#include "discovery_paths.h"

namespace {

using namespace qel::discovery;

bool IsLineEnd(char c) {
    return c == '\n' || c == '\r';
}

}  // namespace

bool CSomIf::readDeviceInfo(std::list<std::string>& devices) {
    const std::string path = CFileUtility::SystemPath(kInventoryFile);
    std::ifstream in(path);
    if (!in) {
        qel::TraceMessage(TraceName(), qel::kLevelError, qel::sig::kReadDeviceInfo,
                          qel::sig::kMsgFileNotFound, path.c_str());
        return false;
    }
    std::string word;
    while (in >> word)
        devices.push_back(word);
    return true;
}

std::string CSomIf::GetVendorName(std::string line) {
    return qel::PciDatabase::VendorName(line.data(), line.size());
}

bool CSomIf::FindDeviceId(const char* deviceId, FILE* file, char*& line, size_t* capacity) {
    for (;;) {
        ssize_t length = getline(&line, capacity, file);
        if (length <= 0)
            return false;
        const char first = line[0];
        if (first != '\t' && first != '#' && first != ' ')
            return false;  // the vendor's block ended
        if (line[1] == '\t')
            continue;  // a subsystem line
        if (std::strncmp(line + 1, deviceId, kIdDigits) != 0)
            continue;
        // The name: from offset 7 to the line end, moved to the buffer's start.
        size_t begin = static_cast<size_t>(length) < kDeviceNameOffset ? static_cast<size_t>(length)
                                                                       : kDeviceNameOffset;
        size_t end = begin;
        while (end < static_cast<size_t>(length) && !IsLineEnd(line[end]))
            ++end;
        std::memmove(line, line + begin, end - begin);
        line[end - begin] = '\0';
        return true;
    }
}

namespace qel {
namespace discovery {

PciDatabase* DeviceNamer::Database() {
    if (!loaded_) {
        loaded_ = true;
        path_ = CFileUtility::SystemPath(kPciIdsFile);
        db_ = PciDatabase::Load(path_, &error_);
        if (db_ != nullptr && batch_)
            db_->BuildIndex();
    }
    return db_.get();
}

void DeviceNamer::Name(CVelmora_DeviceInfo& device) {
    TraceEnter(traceName_, sig::kGetDeviceName, device.DeviceId);
    const std::string& id = device.DeviceId;
    if (id.find('-') == std::string::npos) {
        device.DeviceName = id == kBmcId ? kBmcName : kFirmwareName;
        device.DeviceVendorName = device.VendorName;
        return;
    }
    // An identifier too short to hold both numbers is not looked up.
    if (id.size() < kMinimumIdLength)
        return;
    PciDatabase* db = Database();
    if (db == nullptr) {
        CTraceUtility::WriteDebug(traceName_, kLevelError, QEL_OPEN_FAILED_LINE,
                                  sig::kGetDeviceName, path_.c_str(), error_);
        return;
    }
    const PciDatabase::Result found =
        db->Lookup(CStringUtil::StringToLowerCase(id.substr(kVendorOffset, kIdDigits)),
                   CStringUtil::StringToLowerCase(id.substr(kDeviceOffset, kIdDigits)));
    if (found.vendorFound)
        device.DeviceVendorName = found.vendorName;
    if (found.deviceFound)
        device.DeviceName = found.deviceName;
    TraceLeave(traceName_, sig::kGetDeviceName);
}

}  // namespace discovery
}  // namespace qel

void CSomIf::GetDeviceName(CVelmora_DeviceInfo& device) {
    qel::discovery::DeviceNamer(TraceName(), /*batch=*/false).Name(device);
}
