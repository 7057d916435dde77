// Sends one request through the installed library and prints the result.
#include <cstdio>
#include <string>

#include "CSerializedMsg.h"
#include "CSomIf.h"
#include "CTraceUtility.h"
#include "IWbemClassObject.h"

int main() {
    CSomIf som("consumer");
    IWbemClassObject params;
    params.push("AppKey", std::string("consumer-key"));
    CSerializedMsg codec("consumer");
    std::string body;
    codec.IWbem2String(params, body);
    int rc = som.TransMessage("GetOperatingAuthority", "VELMORA_UpdateManager", body);
    std::printf("rc=%d\n", rc);
    return rc == 7 ? 0 : 1;
}
