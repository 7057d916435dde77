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
#include "discovery_paths.h"

namespace {

using namespace qel::discovery;

bool IsLineEnd(char c) { return c == '\n' || c == '\r'; }

// Closes the database and frees the getline buffer on every way out.
struct LineReader {
    FILE* file = nullptr;
    char* line = nullptr;
    size_t capacity = 0;
    ~LineReader() {
        std::free(line);
        if (file != nullptr) std::fclose(file);
    }
};

}  // namespace

bool CSomIf::readDeviceInfo(std::list<std::string>& devices) {
    const std::string path = CFileUtility::SystemPath(kInventoryFile);
    std::ifstream in(path);
    if (!in) {
        qel::TraceMessage(m_traceName, qel::kLevelError, qel::sig::kReadDeviceInfo,
                          qel::sig::kMsgFileNotFound, path.c_str());
        return false;
    }
    std::string word;
    while (in >> word) devices.push_back(word);
    return true;
}

std::string CSomIf::GetVendorName(std::string line) {
    std::string::size_type end = line.find_first_of("\r\n");
    if (end == std::string::npos) end = line.size();
    std::string::size_type blank = line.find(' ');
    std::string::size_type start = blank == std::string::npos ? 0 : blank + 2;
    if (start >= end) return std::string();
    return line.substr(start, end - start);
}

bool CSomIf::FindDeviceId(const char* deviceId, FILE* file, char*& line, size_t* capacity) {
    for (;;) {
        ssize_t length = getline(&line, capacity, file);
        if (length <= 0) return false;
        const char first = line[0];
        if (first != '\t' && first != '#' && first != ' ') return false;  // the vendor's block ended
        if (line[1] == '\t') continue;  // a subsystem line
        if (std::strncmp(line + 1, deviceId, kIdDigits) != 0) continue;
        // The name: from offset 7 to the line end, moved to the buffer's start.
        size_t begin = static_cast<size_t>(length) < kDeviceNameOffset ? static_cast<size_t>(length)
                                                                        : kDeviceNameOffset;
        size_t end = begin;
        while (end < static_cast<size_t>(length) && !IsLineEnd(line[end])) ++end;
        std::memmove(line, line + begin, end - begin);
        line[end - begin] = '\0';
        return true;
    }
}

void CSomIf::GetDeviceName(CVelmora_DeviceInfo& device) {
    qel::TraceEnter(m_traceName, qel::sig::kGetDeviceName, device.DeviceId);
    const std::string& id = device.DeviceId;
    if (id.find('-') == std::string::npos) {
        device.DeviceName = id == kBmcId ? kBmcName : kFirmwareName;
        device.DeviceVendorName = device.VendorName;
        return;
    }
    // An identifier too short to hold both numbers is not looked up.
    if (id.size() < kMinimumIdLength) return;
    const std::string vendor = CStringUtil::StringToLowerCase(id.substr(kVendorOffset, kIdDigits));
    const std::string deviceNumber =
        CStringUtil::StringToLowerCase(id.substr(kDeviceOffset, kIdDigits));

    const std::string path = CFileUtility::SystemPath(kPciIdsFile);
    LineReader reader;
    reader.file = std::fopen(path.c_str(), "r");
    if (reader.file == nullptr) {
        const int error = errno;
        CTraceUtility::WriteDebug(m_traceName, qel::kLevelError, QEL_OPEN_FAILED_LINE,
                                  qel::sig::kGetDeviceName, path.c_str(), error);
        return;
    }
    while (getline(&reader.line, &reader.capacity, reader.file) > 0) {
        const char first = reader.line[0];
        if (first == '\t' || IsLineEnd(first) || first == '#') continue;
        if (std::strncmp(reader.line, vendor.c_str(), kIdDigits) != 0) continue;
        device.DeviceVendorName = GetVendorName(reader.line);
        if (FindDeviceId(deviceNumber.c_str(), reader.file, reader.line, &reader.capacity)) {
            device.DeviceName = reader.line;
            break;
        }
    }
    qel::TraceLeave(m_traceName, qel::sig::kGetDeviceName);
}
