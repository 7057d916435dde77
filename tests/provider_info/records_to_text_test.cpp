// Provider records to path-named text: the exact bytes of every writer.
#include <gtest/gtest.h>

#include "CProviderManageInfo.h"
#include "support/sample_providers.h"

namespace {

TEST(RecordsToTextTest, DocumentedExampleIsByteExact) {
    CVelmora_DevProviderManageInfo info;
    info.ProviderName = "P";
    info.ProviderVendorName = "V";
    info.ProviderVersion = "1.0";
    CVelmora_DeviceInfo device;
    device.VendorName = "N";
    device.UniqueName = "U0";
    device.DeviceId = "8086:10fb";
    device.DeviceName = "D";
    device.DeviceVendorName = "DV";
    device.HardwareVersion = "01";
    device.ExtendedInfo = {"a", "b"};
    device.LinkAppInfo.resize(1);
    device.LinkAppInfo[0].ApplicationName = "App";
    device.LinkAppInfo[0].ExecutePath = "/x";
    device.LinkAppInfo[0].DescriptionFilePath = "/y";
    device.ModuleInfo.resize(1);
    device.ModuleInfo[0].ModuleKind = "FW";
    device.ModuleInfo[0].ModuleName = "never written";
    device.ModuleInfo[0].UpdatePriority = 1;
    info.DeviceInfo.push_back(device);
    CProviderManageInfo codec("w");
    std::string text;
    codec.toString(info, text);
    EXPECT_EQ(text,
              "string;ProviderName;P;string;ProviderVendorName;V;string;ProviderVersion;1.0;"
              "string;DeviceInfo[0]/VendorName;N;string;DeviceInfo[0]/UniqueName;U0;"
              "string;DeviceInfo[0]/DeviceId;8086:10fb;string;DeviceInfo[0]/DeviceName;D;"
              "string;DeviceInfo[0]/DeviceVendorName;DV;string;DeviceInfo[0]/HardwareVersion;01;"
              "string[];DeviceInfo[0]/ExtendedInfo;a!#b;#CVelmora_LinkApplicationInfo[];"
              "DeviceInfo[0]/LinkAppInfo;;string;LinkAppInfo[0]/ApplicationName;App;"
              "string;LinkAppInfo[0]/ExecutePath;/x;string;LinkAppInfo[0]/DescriptionFilePath;/y;"
              "CVelmora_ManageModuleInfo[];DeviceInfo[0]/ModuleInfo;;"
              "string;ModuleInfo[0]/ModuleKind;FW;int;ModuleInfo[0]/UpdatePriority;1;"
              "int;ModuleInfo[0]/UpdateStatus;0;int;ModuleInfo[0]/UpdateProgress;0;"
              "CVelmora_ManageRepositoryInfo[];ModuleInfo[0]/RepositoryInfo;;");
}

TEST(RecordsToTextTest, RepositoryAndDependencyItems) {
    CVelmora_ManageRepositoryInfo entry;
    entry.ApplyKind = "Online";
    entry.DisplayName = "x;y";
    entry.Priority = -4;
    entry.Recovery = true;
    entry.ModuleFileName = {"m.bin"};
    entry.DependencyInfoOther = {qel_test::SampleDependency("d")};
    CProviderManageInfo codec("w");
    std::string text = "keep;";
    codec.getRepositoryInfo(entry, 3, text);
    EXPECT_EQ(text,
              "keep;string;RepositoryInfo[3]/ApplyKind;Online;string;RepositoryInfo[3]/"
              "HardwareVersion;;string;RepositoryInfo[3]/DisplayName;x%!@y;string;RepositoryInfo[3]"
              "/VendorVersion;;string;RepositoryInfo[3]/ModulePath;;int;RepositoryInfo[3]/Priority;"
              "-4;string;RepositoryInfo[3]/ReqProviderVersion;;string;RepositoryInfo[3]/"
              "RebootAfterPreUpdate;;string;RepositoryInfo[3]/RebootAfterUpdate;;string;"
              "RepositoryInfo[3]/RebootAfterRestore;;bool;RepositoryInfo[3]/Recovery;true;"
              "string[];RepositoryInfo[3]/ModuleFileName;m.bin;#string[];RepositoryInfo[3]/"
              "ManualFileName;;#string[];RepositoryInfo[3]/ReleasenotesFileName;;#"
              "CVelmora_DependencyInfo[];RepositoryInfo[3]/DependencyInfoSelf;;"
              "CVelmora_DependencyInfo[];RepositoryInfo[3]/DependencyInfoOther;;"
              "string;DependencyInfoOther[0]/ProviderName;dep-provider-d;string;"
              "DependencyInfoOther[0]/VendorName;Velmora;string;DependencyInfoOther[0]/UniqueName;"
              "dep-d;string;DependencyInfoOther[0]/ModuleKind;Driver;string;DependencyInfoOther[0]/"
              "VendorVersion;1.0;string;DependencyInfoOther[0]/UpperVendorVersion;2.0;");
}

TEST(RecordsToTextTest, ListsRestartTheirIndicesAndEmptyProvidersWriteThreeItems) {
    CProviderManageInfo codec("w");
    CVelmora_DevProviderManageInfo empty;
    std::string text;
    codec.toString(empty, text);
    EXPECT_EQ(text, "string;ProviderName;;string;ProviderVendorName;;string;ProviderVersion;;");

    text.clear();
    codec.toString(qel_test::SampleDevProvider(), text);
    std::size_t count = 0;
    for (std::size_t at = text.find("LinkAppInfo[0]/ApplicationName"); at != std::string::npos;
         at = text.find("LinkAppInfo[0]/ApplicationName", at + 1)) {
        ++count;
    }
    EXPECT_EQ(count, 3u);
    EXPECT_NE(text.find("DeviceInfo[2]/LinkAppInfo;;"), std::string::npos);
    EXPECT_EQ(text.find("ModuleName"), std::string::npos);

    text.clear();
    codec.toString(qel_test::SampleToolProvider(), text);
    EXPECT_NE(text.find("string;ToolInfo[1]/UniqueName;tool-1;string[];ToolInfo[1]/ExtendedInfo;"
                        "mode=service;#CVelmora_LinkApplicationInfo[];ToolInfo[1]/LinkAppInfo;;"
                        "CVelmora_ManageModuleInfo[];ToolInfo[1]/ModuleInfo;;"),
              std::string::npos);
}

}  // namespace
