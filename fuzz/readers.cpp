// libFuzzer targets for every reader of outside text. One source, built once
// per target with QEL_FUZZ_TARGET naming the reader (see CMakeLists.txt).
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "CIniFileReader.h"
#include "CMofReader.h"
#include "CProviderManageInfo.h"
#include "CSerializedMsg.h"
#include "CSomIf.h"
#include "CUpDownSchedule.h"
#include "CVersionUpLog.h"
#include "discovery/device_namer.h"
#include "somd/protocol.h"
#include "somd/service.h"

namespace {

// The input as a NUL-terminated text of exactly its size.
struct Text {
    Text(const uint8_t* data, size_t size) : bytes(reinterpret_cast<const char*>(data), size) {}
    char* get() { return &bytes[0]; }
    std::string bytes;
};

// A scratch directory used as QEL_SYSROOT by the file readers.
const std::string& Scratch() {
    static const std::string dir = [] {
        char pattern[] = "/tmp/qel-fuzz.XXXXXX";
        std::string made = mkdtemp(pattern) != nullptr ? pattern : "/tmp";
        setenv("QEL_SYSROOT", made.c_str(), 1);
        return made;
    }();
    return dir;
}

std::string WriteScratch(const std::string& suitePath, const std::string& content) {
    std::string path = Scratch() + suitePath;
    for (std::string::size_type at = Scratch().size() + 1; at != std::string::npos;) {
        at = path.find('/', at + 1);
        if (at != std::string::npos)
            mkdir(path.substr(0, at).c_str(), 0755);
    }
    std::ofstream(path, std::ios::binary | std::ios::trunc) << content;
    return path;
}

void Run(const uint8_t* data, size_t size) {
    Text text(data, size);
    const std::string target = QEL_FUZZ_TARGET;
    if (target == "codec") {
        CSerializedMsg codec("fuzz");
        IWbemClassObject obj;
        codec.String2IWbem(text.get(), obj);
        std::vector<std::string> values;
        codec.StringArray2Array(text.get(), values);
        codec.String2Array(text.get(), values);
        std::string out;
        codec.IWbem2String(obj, out);
        codec.getString(text.get());
        codec.getBool(text.get());
        std::string v;
        codec.compareItem2(text.get(), "A[0]/Name", v);
        codec.setStringArray(text.get(), "A[1]/", "Paths", values);
    } else if (target == "provider_records") {
        CProviderManageInfo codec("fuzz");
        CVelmora_DevProviderManageInfo dev;
        codec.toObject(text.get(), dev);
        CVelmora_ToolProviderManageInfo tool;
        codec.toObject(text.get(), tool);
    } else if (target == "provider_tree") {
        CProviderManageInfo codec("fuzz");
        IWbemClassObject obj;
        codec.toObject(text.get(), obj);
    } else if (target == "schedule") {
        CUpDownSchedule codec("fuzz");
        CVELMORA_DownloadSchedule schedule;
        CVELMORA_DownloadSetting setting;
        codec.toObject(text.get(), schedule, setting);
        CVELMORA_UpdateSchedule update;
        codec.toObject(text.get(), update);
        CVelmora_PriorityUpdateParam priority;
        codec.toObject(text.get(), priority);
        IWbemClassObject sections;
        codec.String2IWbem(text.get(), sections);
    } else if (target == "plans") {
        CUpDownSchedule codec("fuzz");
        IWbemClassObject plans, modules;
        codec.String2UpdatePlans(text.get(), plans);
        codec.String2RegisterUpdateModule(text.get(), modules);
    } else if (target == "conformity") {
        CUpDownSchedule codec("fuzz");
        IWbemClassObject list, input;
        codec.toObject2(text.get(), list);
        codec.toObject(text.get(), input);
    } else if (target == "version_lists") {
        CVersionUpLog codec("fuzz");
        std::vector<CVELMORA_QelVersionInfo> versions;
        codec.toObject(text.get(), versions);
        std::vector<CVELMORA_UpdatePlans> plans;
        codec.toObject(text.get(), plans);
        std::vector<CVELMORA_VersionUpdateLog> logs;
        codec.toObject(text.get(), logs);
    } else if (target == "reply") {
        CSomIf som("fuzz");
        som.getResult(static_cast<int>(size % 64), text.get());
        som.GetReturnValue(text.bytes);
        som.getSpecificPos(text.bytes);
        som.getRebootKind(text.get());
    } else if (target == "mof") {
        CMofReader::ParseText(text.bytes);
    } else if (target == "ini") {
        CIniFileReader reader(WriteScratch("/p.ini", text.bytes));
        std::list<std::string> sections;
        reader.list_section(sections);
        std::string value;
        reader.find_section("icon", "status", value);
    } else if (target == "inventory") {
        WriteScratch("/opt/velmora/qel/etc/devices.tmp", text.bytes);
        CSomIf som("fuzz");
        std::list<std::string> devices;
        som.readDeviceInfo(devices);
    } else if (target == "pci_ids") {
        WriteScratch("/usr/share/hwdata/pci.ids", text.bytes);
        // Fixed identifiers and some taken from the input's own lines; the
        // indexed batch naming must name each exactly as a single lookup.
        std::vector<std::string> ids{"PCIROOT-8086-10D3-00", "Bmc", "PCI-8086",
                                     "PCIROOT-abcd-0000"};
        std::string vendor = "0000";
        for (std::size_t pos = 0; pos < text.bytes.size() && ids.size() < 12;) {
            std::size_t end = text.bytes.find('\n', pos);
            end = end == std::string::npos ? text.bytes.size() : end + 1;
            const std::string line = text.bytes.substr(pos, end - pos);
            if (line.size() > 4 && line[0] != '\t')
                vendor = line.substr(0, 4);
            else if (line.size() > 5 && line[1] != '\t')
                ids.push_back("PCIROOT-" + vendor + "-" + line.substr(1, 4) + "-00");
            pos = end;
        }
        CSomIf som("fuzz");
        qel::discovery::DeviceNamer batch("fuzz", /*batch=*/true);
        for (const std::string& id : ids) {
            CVelmora_DeviceInfo single;
            single.DeviceId = id;
            CVelmora_DeviceInfo batched = single;
            som.GetDeviceName(single);
            batch.Name(batched);
            if (single.DeviceName != batched.DeviceName ||
                single.DeviceVendorName != batched.DeviceVendorName)
                std::abort();
        }
    } else if (target == "somd_request") {
        static somd::SomService service(somd::Scenario(), "");
        somd::Request request;
        if (somd::ParseRequest(text.bytes, request) == somd::ReadStatus::kOk) {
            // Bulk runs sleep and write files; the rest is pure request handling.
            if (request.method != "DownloadAll" && request.method != "UpdateAll" &&
                request.method != "RollbackAll") {
                service.Handle(request);
            }
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Run(data, size);
    return 0;
}
