// A first look at the library: one WBEM-style call through ExecMethod and
// one typed call, against the service that socket.conf names (under
// QEL_SYSROOT when that is set).
#include <cstdio>
#include <memory>
#include <string>

#include "CSomIf.h"

int main() {
    CSomIf som("example");

    // WBEM road: input parameters in a property object, output parameters
    // in a new object that the call creates and the caller owns.
    IWbemClassObject in;
    in.push("AppKey", std::string("example-key"));
    IWbemClassObject* out = nullptr;
    char className[] = "VELMORA_UpdateManager";
    char method[] = "GetOperatingAuthority";
    HRESULT rc = som.ExecMethod(className, method, 0, nullptr, &in, &out, nullptr);
    std::unique_ptr<IWbemClassObject> owned(out);
    const long* returnValue = out != nullptr ? out->GetAs<long>("ReturnValue") : nullptr;
    std::printf("ExecMethod %s::%s -> rc=0x%lx, ReturnValue=%ld\n", className, method,
                static_cast<unsigned long>(rc), returnValue != nullptr ? *returnValue : -1L);

    // Typed road: the same request through its typed operation.
    rc = som.ReleaseOperatingAuthority("VELMORA_UpdateManager", std::string("example-key"));
    std::printf("ReleaseOperatingAuthority -> rc=0x%lx\n", static_cast<unsigned long>(rc));
    return static_cast<int>(rc) < 0 ? 1 : 0;
}
