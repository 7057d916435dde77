// Realistic provider-management records for tests: devices with real PCI
// numbers, linked applications, modules, repository entries and dependencies.
#ifndef QEL_TESTS_SUPPORT_SAMPLE_PROVIDERS_H
#define QEL_TESTS_SUPPORT_SAMPLE_PROVIDERS_H

#include <string>

#include "ProviderManageRecords.h"

namespace qel_test {

inline CVelmora_DependencyInfo SampleDependency(const std::string& tag) {
    CVelmora_DependencyInfo d;
    d.ProviderName = "dep-provider-" + tag;
    d.VendorName = "Velmora";
    d.UniqueName = "dep-" + tag;
    d.ModuleKind = "Driver";
    d.ModuleName = "dep-module-" + tag;
    d.VendorVersion = "1.0";
    d.UpperVendorVersion = "2.0";
    return d;
}

// `otherDependencies`: whether the second dependency list has an element.
inline CVelmora_ManageRepositoryInfo SampleRepository(const std::string& tag,
                                                      bool otherDependencies = true) {
    CVelmora_ManageRepositoryInfo r;
    r.ApplyKind = "Online";
    r.HardwareVersion = "A1";
    r.DisplayName = "Firmware " + tag;
    r.VendorVersion = "3.2." + tag;
    r.ModulePath = "/var/qel/repo/" + tag + ".bin";
    r.Priority = 2;
    r.ReqProviderVersion = "1.5";
    r.RebootAfterPreUpdate = "false";
    r.RebootAfterUpdate = "true";
    r.RebootAfterRestore = "false";
    r.Recovery = true;
    r.ModuleFileName = {tag + ".bin", tag + ".sig"};
    r.ManualFileName = {"manual;" + tag + ".pdf"};
    r.ReleasenotesFileName = {};
    r.DependencyInfoSelf = {SampleDependency(tag + "-s0"), SampleDependency(tag + "-s1")};
    if (otherDependencies) r.DependencyInfoOther = {SampleDependency(tag + "-o0")};
    return r;
}

inline CVelmora_ManageModuleInfo SampleModule(const std::string& tag, int repositories) {
    CVelmora_ManageModuleInfo m;
    m.ModuleKind = "Firmware";
    m.ModuleName = "module-" + tag;
    m.UpdatePriority = 1;
    m.UpdateStatus = -3;
    m.UpdateProgress = 50;
    // The last entry's second dependency list stays empty: a module may then
    // follow it in text that every reader takes.
    for (int i = 0; i < repositories; ++i) {
        m.RepositoryInfo.push_back(
            SampleRepository(tag + "r" + std::to_string(i), i + 1 < repositories));
    }
    return m;
}

inline CVelmora_DeviceInfo SampleDevice(const std::string& pciId, const std::string& tag) {
    CVelmora_DeviceInfo d;
    d.VendorName = "Velmora";
    d.UniqueName = "device-" + tag;
    d.DeviceId = pciId;
    d.HardwareVersion = "rev " + tag;
    d.ExtendedInfo = {"slot=" + tag, "numa=0"};
    CVelmora_LinkApplicationInfo app;
    app.ApplicationName = "tool-" + tag;
    app.ExecutePath = "/opt/velmora/bin/tool-" + tag;
    app.DescriptionFilePath = "/opt/velmora/doc/tool-" + tag + ".xml";
    d.LinkAppInfo = {app};
    d.ModuleInfo = {SampleModule(tag + "m0", 2), SampleModule(tag + "m1", 1)};
    return d;
}

// Three devices: Intel 82599ES, Broadcom BCM5719 and NVIDIA Tesla T4.
inline CVelmora_DevProviderManageInfo SampleDevProvider() {
    CVelmora_DevProviderManageInfo p;
    p.ProviderName = "VelmoraNicProvider";
    p.ProviderVendorName = "Velmora";
    p.ProviderVersion = "4.1.0";
    p.DeviceInfo = {SampleDevice("PCIROOT-8086-10FB-0000", "0"),
                    SampleDevice("PCIROOT-14E4-1657-0001", "1"),
                    SampleDevice("PCIROOT-10de-1eb8-0002", "2")};
    return p;
}

inline CVelmora_ToolProviderManageInfo SampleToolProvider() {
    CVelmora_ToolProviderManageInfo p;
    p.ProviderName = "VelmoraToolProvider";
    p.ProviderVendorName = "Velmora";
    p.ProviderVersion = "2.0";
    for (int i = 0; i < 2; ++i) {
        CVelmora_ToolInfo t;
        t.VendorName = "Velmora";
        t.UniqueName = "tool-" + std::to_string(i);
        t.ExtendedInfo = {"mode=service"};
        t.ModuleInfo = {SampleModule("t" + std::to_string(i), 1)};
        p.ToolInfo.push_back(t);
    }
    return p;
}

}  // namespace qel_test

#endif  // QEL_TESTS_SUPPORT_SAMPLE_PROVIDERS_H
