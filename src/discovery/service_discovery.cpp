// CSomIf: device and tool services from the MOF file, and live devices.
#include "CFileUtility.h"
#include "CIniFileReader.h"
#include "CMofReader.h"
#include "CSomIf.h"
#include "CStringUtil.h"
#include "CTraceUtility.h"
#include "common/trace.h"
#include "discovery_paths.h"

namespace {

using namespace qel::discovery;

const int32_t kDeviceKind = 1;
const uint8_t kDeviceFlags = 0x81;
const int32_t kToolKind = 2;
const uint8_t kToolFlags = 0x02;
// An inventory identifier must be longer than this to carry the 9
// characters compared with a provider's sections.
const std::size_t kShortestComparable = 16;
const std::size_t kSectionLength = 9;

#define QEL_ADD_TO_LIST_LINE "%s add %s : %s to list"

// Appends the selected services and traces each one.
void SelectServices(const std::string& traceName, const char* signature, int32_t kind,
                    uint8_t flags, strpairvect_t& services) {
    qel::TraceEnter(traceName, signature);
    CMofReader reader(CFileUtility::SystemPath(kMofFile));
    reader.ParseContents();
    std::vector<CMofContents> instances;
    reader.GetMofContents(instances);
    for (const CMofContents& instance : instances) {
        if (instance.Kind != kind || (instance.Flags & flags) == 0)
            continue;
        CTraceUtility::WriteDebug(traceName, qel::kLevelStatus, QEL_ADD_TO_LIST_LINE, signature,
                                  instance.ClassName.c_str(), instance.Name.c_str());
        services.emplace_back(instance.Name, instance.ClassName);
    }
    qel::TraceLeave(traceName, signature, static_cast<HRESULT>(services.size()),
                    qel::RcForm::kSigned64);
}

}  // namespace

HRESULT CSomIf::GetDeviceService(strpairvect_t& services) {
    SelectServices(TraceName(), qel::sig::kGetDeviceService, kDeviceKind, kDeviceFlags, services);
    return 0;
}

HRESULT CSomIf::GetToolService(strpairvect_t& services) {
    SelectServices(TraceName(), qel::sig::kGetToolService, kToolKind, kToolFlags, services);
    return 0;
}

bool CSomIf::isDeviceAlive(CMofContents provider) {
    qel::TraceEnter(TraceName(), qel::sig::kIsDeviceAlive, provider.ClassName);
    CIniFileReader ini(CFileUtility::SystemPath(kProviderDir) + "/" + provider.ProviderFile);
    std::list<std::string> sections;
    ini.list_section(sections);
    std::list<std::string> devices;
    readDeviceInfo(devices);
    for (const std::string& section : sections) {
        for (const std::string& device : devices) {
            if (device.size() <= kShortestComparable)
                continue;
            const std::string upper = CStringUtil::StringToUpperCase(device);
            if (upper.compare(kVendorOffset, kSectionLength, section) == 0)
                return true;
        }
    }
    qel::TraceLeave(TraceName(), qel::sig::kIsDeviceAlive, 0, qel::RcForm::kSigned64);
    return false;
}
