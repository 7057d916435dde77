#include "bench_data.h"

#include "IWbemClassObject.h"
#include "common/record_codec.h"
#include "common/record_json.h"
#include "provider_info/plain_text.h"

namespace bench {
namespace {

std::string Padded(const char* prefix, std::size_t i) {
    return prefix + std::to_string(i);
}

}  // namespace

std::string GenericBody(std::size_t bytes) {
    std::string out;
    IWbemClassObject w;
    for (std::size_t i = 0; out.size() < bytes; ++i) {
        w.SetString(out, "Name", Padded("module-name-", i));
        w.SetInt(out, "Count", static_cast<int>(i));
        w.SetStringArray(out, "List", {Padded("alpha", i), "beta", "gamma"});
        w.SetBool(out, "Flag", i % 2 == 0);
    }
    return out;
}

std::string GenericJson(std::size_t bytes) {
    nlohmann::json doc = nlohmann::json::array();
    for (std::size_t i = 0, size = 0; size < bytes; ++i) {
        doc.push_back({{"Name", Padded("module-name-", i)},
                       {"Count", i},
                       {"List", {Padded("alpha", i), "beta", "gamma"}},
                       {"Flag", i % 2 == 0}});
        size += 76 + 2 * std::to_string(i).size();  // the item text of one record
    }
    return doc.dump();
}

std::string StringArrayBody(std::size_t bytes) {
    std::string out;
    IWbemClassObject w;
    for (std::size_t i = 0; out.size() < bytes; ++i) {
        w.SetStringArray(out, "Lines",
                         {Padded("2026-11-23 07:00:00 downloaded package ", i), "ok", "done"});
    }
    return out;
}

std::string StringArrayJson(std::size_t bytes) {
    nlohmann::json doc = nlohmann::json::array();
    for (std::size_t i = 0, size = 0; size < bytes; ++i) {
        doc.push_back({Padded("2026-11-23 07:00:00 downloaded package ", i), "ok", "done"});
        size += 66 + std::to_string(i).size();
    }
    return doc.dump();
}

CVelmora_DevProviderManageInfo Provider(std::size_t bytes) {
    CVelmora_DevProviderManageInfo info;
    info.ProviderName = "BenchProvider";
    info.ProviderVendorName = "Velmora";
    info.ProviderVersion = "1.0";
    std::size_t perDevice = 0;
    const char* ids[] = {"PCIROOT-8086-10FB-", "PCIROOT-14E4-1657-", "PCIROOT-10DE-1EB8-",
                         "PCIROOT-8086-1572-"};
    for (std::size_t i = 0;; ++i) {
        CVelmora_DeviceInfo d;
        d.VendorName = "Velmora";
        d.UniqueName = Padded("device-", i);
        d.DeviceId = ids[i % 4] + std::to_string(i);
        d.HardwareVersion = "A1";
        d.ExtendedInfo = {"slot=" + std::to_string(i), "numa=0"};
        d.LinkAppInfo = {{"tool", "/opt/velmora/bin/tool", "/opt/velmora/doc/tool.xml", ""}};
        CVelmora_ManageModuleInfo m;
        m.ModuleKind = "Firmware";
        m.ModuleName = Padded("firmware-", i);
        m.UpdatePriority = 1;
        CVelmora_ManageRepositoryInfo r;
        r.ApplyKind = "Online";
        r.DisplayName = "Firmware package";
        r.VendorVersion = "3.2.1";
        r.ModulePath = "/var/qel/repo/fw.bin";
        r.ModuleFileName = {"fw.bin", "fw.sig"};
        CVelmora_DependencyInfo dep;
        dep.ProviderName = "BenchProvider";
        dep.UniqueName = Padded("device-", i);
        dep.ModuleKind = "Driver";
        dep.VendorVersion = "1.0";
        dep.UpperVendorVersion = "2.0";
        r.DependencyInfoSelf = {dep};
        m.RepositoryInfo = {r};
        d.ModuleInfo = {m};
        info.DeviceInfo.push_back(d);
        if (i == 3)
            perDevice = ProviderText(info).size() / 4;
        if (perDevice != 0 && (i + 1) * perDevice >= bytes)
            break;
    }
    return info;
}

std::string ProviderText(const CVelmora_DevProviderManageInfo& info) {
    std::string text;
    qel::pm::WritePlainText(info, text);
    return text;
}

std::string ProviderJson(const CVelmora_DevProviderManageInfo& info) {
    return nlohmann::json(info).dump();
}

namespace {

// Realistic plans; the other records get "Field-i" strings and i % 5.
void Fill(CVELMORA_UpdatePlans& p, std::size_t i) {
    p.ProviderName = "VelmoraNicProvider";
    p.VendorName = "Intel";
    p.UniqueName = Padded("nic-firmware-", i);
    p.DeviceId = "PCIROOT-8086-10FB-0000";
    p.ModuleKind = "Firmware";
    p.UpdatePriority = static_cast<int>(i % 5);
    p.CurrentVendorVersion = "3.1.0";
    p.NextVendorVersion = "3.2.1";
    p.DisplayName = "Intel 82599 firmware";
    p.DependencyName = Padded("nic-driver-", i);
}

struct FieldFiller {
    std::size_t i;
    void String(const char* name, std::string& value) { value = Padded(name, i); }
    void Int(const char*, int& value) { value = static_cast<int>(i % 5); }
};

template <class Record>
void Fill(Record& r, std::size_t i) {
    FieldFiller filler{i};
    qel::VisitFields(r, filler);
}

std::string ListHeaderItem(const char* header) {
    return std::string(qel::item::kTagClassArray) + ";" + header + ";;";
}

}  // namespace

template <class Record>
std::vector<Record> Records(std::size_t bytes) {
    std::vector<Record> records;
    std::string text = ListHeaderItem(qel::ListHeader(Record()));
    qel::ItemWriter writer(text);
    for (std::size_t i = 0; text.size() < bytes; ++i) {
        records.emplace_back();
        Fill(records.back(), i);
        qel::VisitFields(records.back(), writer);
    }
    return records;
}

template <class Record>
std::string ListText(const std::vector<Record>& records) {
    std::string out = ListHeaderItem(qel::ListHeader(Record()));
    qel::ItemWriter writer(out);
    for (const auto& record : records)
        qel::VisitFields(record, writer);
    return out;
}

template <class Record>
std::string ListJson(const std::vector<Record>& records) {
    return nlohmann::json(records).dump();
}

#define QEL_BENCH_LIST(Record)                                         \
    template std::vector<Record> Records<Record>(std::size_t);         \
    template std::string ListText<Record>(const std::vector<Record>&); \
    template std::string ListJson<Record>(const std::vector<Record>&);
QEL_BENCH_LIST(CVELMORA_UpdatePlans)
QEL_BENCH_LIST(CVELMORA_QelVersionInfo)
QEL_BENCH_LIST(CVELMORA_VersionUpdateLog)
#undef QEL_BENCH_LIST

std::string RegistrationText(std::size_t bytes) {
    std::string out = "string;AppKey;bench;class[];UpdateModuleRegistInfo;;";
    IWbemClassObject w;
    for (std::size_t i = 0; out.size() < bytes; ++i) {
        w.SetString(out, "VendorName", "Velmora");
        w.SetString(out, "UniqueName", Padded("module-", i));
        w.SetString(out, "ModuleKind", "Firmware");
        w.SetString(out, "VendorVersion", "1.0");
        w.SetString(out, "ModulePath", Padded("/var/qel/repo/module-", i));
    }
    return out;
}

std::string ConformityText(std::size_t bytes) {
    std::string out = "class[];UpdateModuleConformityList;;";
    IWbemClassObject w;
    for (std::size_t i = 0; out.size() < bytes; ++i) {
        w.SetString(out, "ProviderName", "VelmoraNicProvider");
        w.SetString(out, "VendorName", "Intel");
        w.SetString(out, "UpdateModuleKind", "Firmware");
        out += "class;ModuleInfo;;";
        w.SetString(out, "UniqueName", Padded("nic-", i));
        w.SetString(out, "DispName", "Intel 82599 firmware");
        w.SetString(out, "ModuleName", Padded("nic-firmware-", i));
        out += "class;AttrInfo;;";
        w.SetString(out, "HardwareVersion", "A1");
        w.SetInt(out, "Priority", 2);
        out += "class;LinkInfo;;";
        w.SetBool(out, "Recovery", true);
        out += "class[];FileInfo;;";
        w.SetString(out, "Kind", "module");
        w.SetString(out, "Url", "/var/qel/repo/fw.bin");
        w.SetString(out, "PhysiName", "fw.bin");
        w.SetString(out, "Md5Hash", "0123456789abcdef0123456789abcdef");
    }
    return out;
}

}  // namespace bench
