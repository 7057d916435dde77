// Provider records to path-named text: the exact bytes of every writer.
#include <gtest/gtest.h>

#include "CProviderManageInfo.h"
#include "support/sample_providers.h"

namespace {

// The lists of one device or tool as written under `owner` ("DeviceInfo[0]").
std::string Lists(const std::string& owner) {
    return "#CVelmora_LinkApplicationInfo[];" + owner +
           "/LinkAppInfo;;string;LinkAppInfo[0]/ApplicationName;App;"
           "string;LinkAppInfo[0]/ExecutePath;/x;string;LinkAppInfo[0]/DescriptionFilePath;/y;"
           "CVelmora_ManageModuleInfo[];" +
           owner +
           "/ModuleInfo;;string;ModuleInfo[0]/ModuleKind;FW;int;ModuleInfo[0]/UpdatePriority;1;"
           "int;ModuleInfo[0]/UpdateStatus;-2;int;ModuleInfo[0]/UpdateProgress;50;"
           "CVelmora_ManageRepositoryInfo[];ModuleInfo[0]/RepositoryInfo;;";
}

template <class Info>
std::string Text(const nlohmann::json& json) {
    std::string text;
    CProviderManageInfo("w").toString(json.get<Info>(), text);
    return text;
}

TEST(RecordsToTextTest, ProvidersRepositoriesAndDependenciesAreWrittenByteExact) {
    const nlohmann::json lists = nlohmann::json::parse(
        R"({"LinkAppInfo":[{"ApplicationName":"App","ExecutePath":"/x","DescriptionFilePath":"/y"}],)"
        R"("ModuleInfo":[{"ModuleKind":"FW","ModuleName":"never written","UpdatePriority":1,)"
        R"("UpdateStatus":-2,"UpdateProgress":50}]})");
    nlohmann::json device = lists, tool = lists;
    device.update(nlohmann::json::parse(
        R"({"VendorName":"N","UniqueName":"U0","DeviceId":"8086:10fb","DeviceName":"D",)"
        R"("DeviceVendorName":"DV","HardwareVersion":"01","ExtendedInfo":["a","b"]})"));
    tool["VendorName"] = "TV";
    nlohmann::json tools = nlohmann::json::parse(
        R"({"ProviderName":"T","ProviderVendorName":"W","ProviderVersion":"2"})");
    tools["ToolInfo"] = nlohmann::json::array({tool, tool});
    tools["ToolInfo"][1].update({{"UniqueName", "t;1"}, {"ExtendedInfo", {"mode=service"}}});
    nlohmann::json devices = nlohmann::json::parse(
        R"({"ProviderName":"P","ProviderVendorName":"V","ProviderVersion":"1.0"})");
    devices["DeviceInfo"] = nlohmann::json::array({device});
    EXPECT_EQ(Text<CVelmora_DevProviderManageInfo>(devices),
              "string;ProviderName;P;string;ProviderVendorName;V;string;ProviderVersion;1.0;"
              "string;DeviceInfo[0]/VendorName;N;string;DeviceInfo[0]/UniqueName;U0;"
              "string;DeviceInfo[0]/DeviceId;8086:10fb;string;DeviceInfo[0]/DeviceName;D;"
              "string;DeviceInfo[0]/DeviceVendorName;DV;string;DeviceInfo[0]/HardwareVersion;01;"
              "string[];DeviceInfo[0]/ExtendedInfo;a!#b;" +
                  Lists("DeviceInfo[0]"));
    // Every list's indices restart at 0 for the second tool.
    EXPECT_EQ(Text<CVelmora_ToolProviderManageInfo>(tools),
              "string;ProviderName;T;string;ProviderVendorName;W;string;ProviderVersion;2;"
              "string;ToolInfo[0]/VendorName;TV;string;ToolInfo[0]/UniqueName;;"
              "string[];ToolInfo[0]/ExtendedInfo;;" +
                  Lists("ToolInfo[0]") +
                  "string;ToolInfo[1]/VendorName;TV;string;ToolInfo[1]/UniqueName;t%!@1;"
                  "string[];ToolInfo[1]/ExtendedInfo;mode=service;" +
                  Lists("ToolInfo[1]"));
    // Repository and dependency items, appended.
    nlohmann::json entry = nlohmann::json::parse(
        R"({"ApplyKind":"Online","DisplayName":"x;y","Priority":-4,"Recovery":true,)"
        R"("ModuleFileName":["m.bin"],"DependencyInfoOther":[{"ProviderName":"DP","VendorName":)"
        R"("DV","UniqueName":"DU","ModuleKind":"DK","ModuleName":"never written",)"
        R"("VendorVersion":"1","UpperVendorVersion":"2"}]})");
    std::string text = "keep;";
    CProviderManageInfo("w").getRepositoryInfo(entry.get<CVelmora_ManageRepositoryInfo>(), 3, text);
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
              "string;DependencyInfoOther[0]/ProviderName;DP;string;DependencyInfoOther[0]/"
              "VendorName;DV;string;DependencyInfoOther[0]/UniqueName;DU;string;"
              "DependencyInfoOther[0]/ModuleKind;DK;string;DependencyInfoOther[0]/VendorVersion;1;"
              "string;DependencyInfoOther[0]/UpperVendorVersion;2;");
}

}  // namespace
