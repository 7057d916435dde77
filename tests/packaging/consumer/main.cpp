// Calls the service through the installed library and prints the result.
#include <cstdio>
#include <memory>
#include <string>

#include "CSomIf.h"

int main() {
    CSomIf som("consumer");
    IWbemClassObject in;
    in.push("Name", std::string("Interval"));
    IWbemClassObject* out = nullptr;
    char cls[] = "VELMORA_ToolServiceWD", method[] = "AliveMonitorGetParameter";
    HRESULT rc = som.ExecMethod(cls, method, 0, nullptr, &in, &out, nullptr);
    std::unique_ptr<IWbemClassObject> owned(out);
    const std::string* value = out != nullptr ? out->GetAs<std::string>("Value") : nullptr;
    std::printf("rc=%ld Interval=%s\n", rc, value != nullptr ? value->c_str() : "?");
    return rc == 0 && value != nullptr && *value == "30" ? 0 : 1;
}
