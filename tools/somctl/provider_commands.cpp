// Providers: what a provider manages, the services registered in the MOF
// file, and device names from the PCI ID database.
#include <cctype>

#include "CFileUtility.h"
#include "CMofReader.h"
#include "commands.h"
#include "common/protocol.h"
#include "common/record_json.h"

namespace somctl {
namespace {

bool IsRegistered(const strpairvect_t& services, const std::string& className) {
    for (const auto& service : services) {
        if (service.second == className)
            return true;
    }
    return false;
}

// The registered services say which classes are device and which tool
// providers, so a wrong class is named as such before anything is sent.
int CheckProviderClass(Context& c, const std::string& kind, const std::string& className) {
    strpairvect_t devices, tools;
    c.som.GetDeviceService(devices);
    c.som.GetToolService(tools);
    const bool device = IsRegistered(devices, className);
    const bool tool = IsRegistered(tools, className);
    if ((kind == "device" && device) || (kind == "tool" && tool))
        return kOk;
    if (device || tool) {
        return c.output.Usage(className + " is a " + (device ? "device" : "tool") +
                              " provider, not a " + kind + " provider");
    }
    return c.output.Usage("no " + kind + " provider class '" + className + "' is registered in " +
                          qel::protocol::kMofFile);
}

template <class Info, class Item, class Row>
int PrintProvider(Context& c, const Info& info, const std::vector<Item>& items, Table table,
                  Row row) {
    if (c.output.json()) {
        c.output.Json({{"ok", true}, {"provider", info}});
        return kOk;
    }
    c.output.out() << info.ProviderName << " " << info.ProviderVersion << " ("
                   << info.ProviderVendorName << ")\n";
    for (const Item& item : items) {
        for (const auto& module : item.ModuleInfo)
            table.Row(row(item, module));
    }
    c.output.Print(table, "no devices or tools reported");
    return kOk;
}

int DeviceProvider(Context& c, const std::string& className) {
    CVelmora_DevProviderManageInfo info;
    if (int rc = c.output.Result("providers", c.som.GetProviderManageInfo(className, info)))
        return rc;
    return PrintProvider(c, info, info.DeviceInfo,
                         Table({"DEVICE", "ID", "NAME", "VENDOR", "MODULE", "KIND", "PACKAGES"}),
                         [](const CVelmora_DeviceInfo& d, const CVelmora_ManageModuleInfo& m) {
                             return std::vector<std::string>{
                                 d.UniqueName,
                                 d.DeviceId,
                                 d.DeviceName,
                                 d.DeviceVendorName,
                                 m.ModuleName,
                                 m.ModuleKind,
                                 std::to_string(m.RepositoryInfo.size())};
                         });
}

int ToolProvider(Context& c, const std::string& className) {
    CVelmora_ToolProviderManageInfo info;
    if (int rc = c.output.Result("providers", c.som.GetProviderManageInfo(className, info)))
        return rc;
    return PrintProvider(c, info, info.ToolInfo, Table({"TOOL", "MODULE", "KIND", "PACKAGES"}),
                         [](const CVelmora_ToolInfo& t, const CVelmora_ManageModuleInfo& m) {
                             return std::vector<std::string>{
                                 t.UniqueName, m.ModuleName, m.ModuleKind,
                                 std::to_string(m.RepositoryInfo.size())};
                         });
}

// The registration of a device service, which names the provider's INI file.
CMofContents Registration(const std::string& serviceName) {
    CMofReader reader(CFileUtility::SystemPath(qel::protocol::kMofFile));
    reader.ParseContents();
    std::vector<CMofContents> instances;
    reader.GetMofContents(instances);
    for (const CMofContents& instance : instances) {
        if (instance.Name == serviceName)
            return instance;
    }
    return CMofContents();
}

int AliveServices(Context& c) {
    strpairvect_t services;
    c.som.GetDeviceService(services);
    nlohmann::json doc = nlohmann::json::array();
    Table table({"SERVICE", "CLASS", "ALIVE"});
    for (const auto& service : services) {
        const bool alive = c.som.isDeviceAlive(Registration(service.first));
        doc.push_back({{"service", service.first}, {"class", service.second}, {"alive", alive}});
        table.Row({service.first, service.second, alive ? "yes" : "no"});
    }
    if (c.output.json())
        c.output.Json({{"ok", true}, {"services", doc}});
    else
        c.output.Print(table, "no device services registered");
    return kOk;
}

bool IsHex(const std::string& text, std::size_t from, std::size_t count) {
    for (std::size_t i = from; i < from + count; ++i) {
        if (i >= text.size() || !std::isxdigit(static_cast<unsigned char>(text[i])))
            return false;
    }
    return true;
}

// The library names a device from the hex numbers at offsets 8 and 13 and names
// every identifier without "-" after the firmware ("BIOS/EFI") or the BMC, so a
// "8086:1533" would be named "BIOS/EFI": only the dashed form is accepted.
bool IsDeviceId(const std::string& id) {
    return id.size() >= 17 && id[7] == '-' && id[12] == '-' && IsHex(id, 8, 4) && IsHex(id, 13, 4);
}

}  // namespace

int Providers(Context& c, const Args& args) {
    if (args.size() != 3 || (args[1] != "device" && args[1] != "tool"))
        return c.output.Usage("usage: somctl providers device|tool CLASS");
    if (int rc = CheckProviderClass(c, args[1], args[2]))
        return rc;
    return args[1] == "device" ? DeviceProvider(c, args[2]) : ToolProvider(c, args[2]);
}

int Services(Context& c, const Args& args) {
    if (args.size() != 2 || (args[1] != "device" && args[1] != "tool" && args[1] != "alive"))
        return c.output.Usage("usage: somctl services device|tool|alive");
    if (args[1] == "alive")
        return AliveServices(c);
    strpairvect_t services;
    if (args[1] == "device")
        c.som.GetDeviceService(services);
    else
        c.som.GetToolService(services);
    if (c.output.json()) {
        nlohmann::json doc = nlohmann::json::array();
        for (const auto& s : services)
            doc.push_back({{"service", s.first}, {"class", s.second}});
        c.output.Json({{"ok", true}, {"services", doc}});
        return kOk;
    }
    Table table({"SERVICE", "CLASS"});
    for (const auto& s : services)
        table.Row({s.first, s.second});
    c.output.Print(table, "no services registered");
    return kOk;
}

int Name(Context& c, const Args& args) {
    if (args.size() != 2)
        return c.output.Usage("usage: somctl name DEVICE-ID");
    if (!IsDeviceId(args[1])) {
        return c.output.Usage(
            "DEVICE-ID accepts PREFIX-VVVV-DDDD... (vendor and device in hex at offsets 8 and "
            "13, e.g. PCIROOT-8086-1533-0000), not '" +
            args[1] + "'");
    }
    CVelmora_DeviceInfo device;
    device.DeviceId = args[1];
    c.som.GetDeviceName(device);
    if (c.output.json()) {
        c.output.Json({{"ok", true},
                       {"id", device.DeviceId},
                       {"name", device.DeviceName},
                       {"vendor", device.DeviceVendorName}});
    } else if (device.DeviceName.empty() && device.DeviceVendorName.empty()) {
        c.output.out() << args[1] << ": not in the PCI ID database\n";
    } else {
        c.output.out() << args[1] << ": " << device.DeviceVendorName << " " << device.DeviceName
                       << "\n";
    }
    return kOk;
}

}  // namespace somctl
