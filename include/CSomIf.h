// CSomIf: the client of the local SOM operation-management service.
//
// Every operation turns one call into one text message (a header naming the
// service class and method, then a body of items), exchanges it with the
// service over the socket that "/opt/velmora/qel/som/socket.conf" names, and
// decodes the one reply into the caller's records or property objects.
// Results are HRESULT codes: 0 success, 0x80081001 the request could not be
// sent, 0x80081101 no reply came, anything else the service's own code.
//
// Ownership: inputs are only read; output records are filled in place. An
// output property object that an operation creates because the caller passed
// a null pointer belongs to the caller, who deletes (or releases) it, and
// with it every nested object that a decoder added.
//
// Threads: an object holds no lock; between calls it keeps only the
// transport's receive storage (as large as the largest reply it took, at
// most 4 MiB) and the socket configuration last read. Make the calls on one
// object one at a time. Separate objects are independent.
#ifndef QEL_CSOMIF_H
#define QEL_CSOMIF_H

#include <cstdint>
#include <cstdio>
#include <list>
#include <string>
#include <vector>

#include "CFileTransfer.h"
#include "CMofReader.h"
#include "IWbemClassObject.h"
#include "ProviderManageRecords.h"
#include "QelExport.h"
#include "QelTypes.h"
#include "ScheduleRecords.h"
#include "VersionListRecords.h"

class QEL_SOMIF_API CSomIf : public CFileTransfer {
  public:
    // Prepares the transport; nothing is sent until an operation is called.
    explicit CSomIf(std::string traceName);
    virtual ~CSomIf();

    // --- Message header and exchange --------------------------------------

    // The method name of a function text: the text between "::" and "(", or
    // the text unchanged when it holds no "(".
    std::string getShortFuncName(const std::string& func);

    // The header: "%08d%08lx%s/%s%08d%08u" of header length, 0xcafefeed,
    // class, method, 0 and body length. Class and method together must stay
    // below 991 characters (a longer header is cut at 1023 characters).
    std::string getMsgHead(std::string className, const char* func, uint32_t bodyLength);
    // As above with the class named by the record's ClassName.
    std::string getMsgHead(const CMofContents& mof, const char* func, uint32_t bodyLength);

    // One exchange into the caller's buffer (NUL-terminated reply). Returns
    // the low 32 bits of the service's result, 0x80081001 or 0x80081101.
    int TransMessage(const char* func, std::string className, std::string& body, char* buffer,
                     unsigned long bufferSize);
    // One exchange through a 4 MiB buffer; `body` is replaced by the whole
    // reply text, or by "" when nothing was received.
    int TransMessage(const char* func, std::string className, std::string& body);
    // One exchange with an empty body; the reply is dropped. `extraText` is
    // not read.
    int TransMessage(const char* func, std::string className, const char* extraText);

    // --- Reading replies -----------------------------------------------------

    // The reply's result field read as hexadecimal; when it is zero (or holds
    // no digits), the number of the body's "long;ReturnValue;" item.
    HRESULT getResult(int headerLength, const char* reply);
    // The number of the first "long;ReturnValue;" item of the reply's body,
    // 0 when there is none.
    HRESULT GetReturnValue(std::string reply);
    // Where the reply's body begins: 16 characters after the first digit that
    // follows the first "/"; 0 without a "/". Never past the end of `reply`.
    unsigned int getSpecificPos(std::string reply);
    // The number of the first "long;Reboot;" item after the first character,
    // 0 when there is none.
    long getRebootKind(const char* text);

    // --- Hand-built items ----------------------------------------------------

    // "bool;" name ";" "1" or "0" ";".
    std::string getBoolParam(const char* name, bool value);
    // "string;AppKey;" value ";".
    std::string getStrParam(std::string value);

    // --- WBEM method relay -----------------------------------------------------
    // Output parameters: when *outParams is null a new object is created and
    // belongs to the caller. A code of the transport family
    // ((code & 0x80080000) == 0x80080000) is the call's result; any other
    // code is the method's own and lands in the output's "ReturnValue".

    // Relays any method: inParams (may be null) as the request body, the
    // reply's body decoded into *outParams on top of ReturnValue. Returns 0,
    // a transport-family code, or -1 for a null class or method name.
    // flags, context and callResult are not used.
    HRESULT ExecMethod(OLECHAR* className, OLECHAR* methodName, long flags, IWbemContext* context,
                       IWbemClassObject* inParams, IWbemClassObject** outParams,
                       IWbemCallResult** callResult);
    // Relays a method and stores only its ReturnValue; returns the code too.
    int TransUmMessage(std::string className, std::string methodName, IWbemClassObject* inParams,
                       IWbemClassObject** outParams);

    // Update-management methods relayed to `className`.
    HRESULT Reboot(std::string className, IWbemClassObject* inParams, IWbemClassObject** outParams);
    HRESULT ExecuteUpdateApplyCheck(std::string className, IWbemClassObject* inParams,
                                    IWbemClassObject** outParams);
    HRESULT RegisterUpdateModule(std::string className, IWbemClassObject* inParams,
                                 IWbemClassObject** outParams);
    HRESULT SetDependencyInfo(std::string className, IWbemClassObject* inParams,
                              IWbemClassObject** outParams);
    HRESULT ReleaseOperatingAuthority(std::string className, IWbemClassObject* inParams,
                                      IWbemClassObject** outParams);
    // Sends the wire method "GetOperatingAuthority".
    HRESULT GetOperationAuthority(std::string className, IWbemClassObject* inParams,
                                  IWbemClassObject** outParams);
    HRESULT ExecuteUpdateRestore(std::string className, IWbemClassObject* inParams,
                                 IWbemClassObject** outParams);
    HRESULT ExecutePreUpdate(std::string className, IWbemClassObject* inParams,
                             IWbemClassObject** outParams);
    HRESULT ExecuteUpdateBackup(std::string className, IWbemClassObject* inParams,
                                IWbemClassObject** outParams);
    HRESULT ExecuteUpdate(std::string className, IWbemClassObject* inParams,
                          IWbemClassObject** outParams);

    // --- WBEM queries ---------------------------------------------------------------
    // Decoded into *outParams (created when null) only when the result, as a
    // signed 32-bit number, is not negative; no ReturnValue is set. On a
    // negative result *outParams is left as it was, possibly null.

    // inParams as the body; the conformity list into
    // "UpdateModuleConformityList".
    HRESULT CheckUpdateModuleConformity(std::string className, IWbemClassObject* inParams,
                                        IWbemClassObject** outParams);
    // Always an empty body; the provider tree into "DevProviderManageInfo" or
    // "ToolProviderManageInfo".
    HRESULT GetProviderManageInfo(std::string className, IWbemClassObject* inParams,
                                  IWbemClassObject** outParams);
    // inParams as the body; the plans into the class array "UpdatePlansList".
    HRESULT GetUpdatePlans(std::string className, IWbemClassObject* inParams,
                           IWbemClassObject** outParams);

    // --- Update manager --------------------------------------------------------
    // Readers fill their outputs only when the result, as a signed 32-bit
    // number, is not negative (GetAutoUpdateSetting always decodes).

    HRESULT SetUpdatePriority(std::string className, const CVelmora_PriorityUpdateParam& param);
    HRESULT SetAutoDownloadSetting(const CVELMORA_DownloadSetting& setting,
                                   const CVELMORA_DownloadSchedule& schedule);
    HRESULT SetAutoUpdateSetting(const CVELMORA_UpdateSchedule& schedule);
    HRESULT GetAutoDownloadSetting(CVELMORA_DownloadSetting& setting,
                                   CVELMORA_DownloadSchedule& schedule);
    HRESULT GetAutoUpdateSetting(CVELMORA_UpdateSchedule& schedule);
    // Replies of plans are limited to 8191 characters.
    HRESULT GetUpdatePlans(std::string className, std::vector<CVELMORA_UpdatePlans>& plans);
    HRESULT GetUpdatePlans(std::string className, bool rollback,
                           std::vector<CVELMORA_UpdatePlans>& plans);
    HRESULT ReleaseOperatingAuthority(std::string className, std::string appKey);
    HRESULT GetOperatingAuthority(std::string className, std::string appKey);
    HRESULT ExecuteReboot();
    // rebootKind: the reply's "Reboot" item (0 without one).
    HRESULT RollbackAll(LONG& rebootKind);
    HRESULT UpdateAll(LONG& rebootKind);
    HRESULT DownloadAll(const CVELMORA_DownloadSetting& setting);

    // --- Status, versions and logs ---------------------------------------------

    // Replies of versions are limited to 8191 characters.
    HRESULT CollectQelVersion(std::vector<CVELMORA_QelVersionInfo>& versions);
    HRESULT CollectVersionUpLog(std::vector<CVELMORA_VersionUpdateLog>& logs);
    // Log lines of the log manager; a failed send gives 0xFFFFFFFF.
    HRESULT CollectDownloadLog(std::string appKey, std::vector<std::string>& lines);
    HRESULT CollectResultLog(std::string appKey, std::vector<std::string>& lines);
    // The exchange of the log operations with "VELMORA_LogManager": lines are
    // filled only for a zero result; a failed send gives -1.
    HRESULT getManagerLog(const char* method, const char* body, std::vector<std::string>& lines);
    // The update process's activity from ProcessStatus.ini: 0 idle, 0x8001
    // update, 0x8002 rollback, 0x8003 download. Always returns 0.
    HRESULT GetQELStatus(LONG& status);

    // --- Alive monitor -----------------------------------------------------------

    HRESULT AliveMonitorUpdateParameters();
    HRESULT AliveMonitorClearParameters();
    HRESULT AliveMonitorSetParameter(std::string name, std::string value);
    // Reads the reply's "Value" and "Type" items (untouched on a negative result).
    HRESULT AliveMonitorGetParameter(std::string name, std::string& value, unsigned int& type);

    // --- Provider-management queries -------------------------------------------------
    // The device or tool list of `info` is emptied first; the provider's own
    // fields are overwritten by those the reply carries. Every returned device
    // is named from the PCI ID database. A negative service result gives
    // 0x80081101 (the reply's body is still read).

    HRESULT GetProviderManageInfo(std::string className, CVelmora_DevProviderManageInfo& info);
    HRESULT GetProviderManageInfo(std::string className, CVelmora_ToolProviderManageInfo& info);
    // Receives the reply of a request just sent whose header had
    // `headerLength` bytes; the service's result, or -1 when nothing came.
    int RecvProviderManageInfo(size_t headerLength, CVelmora_DevProviderManageInfo& info);
    int RecvProviderManageInfo(size_t headerLength, CVelmora_ToolProviderManageInfo& info);

    // --- Device inventory and naming ---------------------------------------------------

    // Appends the words of "/opt/velmora/qel/etc/devices.tmp"; false when the
    // file cannot be opened.
    bool readDeviceInfo(std::list<std::string>& devices);
    // Fills DeviceName and DeviceVendorName from "/usr/share/hwdata/pci.ids"
    // by the vendor (offset 8) and device (offset 13) numbers of DeviceId.
    // Identifiers without "-" are named "BMC" ("Bmc") or "BIOS/EFI"; shorter
    // identifiers with "-" leave the record as it is.
    void GetDeviceName(CVelmora_DeviceInfo& device);
    // The vendor name of a database vendor line.
    std::string GetVendorName(std::string line);
    // Reads the device lines after a vendor line; true with the device's name
    // in `line` when `deviceId` (4 lower-case digits) is found. `line` and
    // `capacity` are the caller's getline buffer.
    bool FindDeviceId(const char* deviceId, FILE* file, char*& line, size_t* capacity);

    // --- Service discovery ----------------------------------------------------------
    // From "/opt/velmora/qel/etc/qelvelmora.mof": appends (Name, ClassName) of
    // every device service (kind 1, a flag of 0x81 set) or tool service (kind
    // 2, flag 0x02). `services` is never cleared. Always returns 0.
    HRESULT GetDeviceService(strpairvect_t& services);
    HRESULT GetToolService(strpairvect_t& services);
    // Whether a device of the inventory is among the sections of the
    // provider's INI file under "/opt/velmora/qel/provider".
    bool isDeviceAlive(CMofContents provider);
};

#endif  // QEL_CSOMIF_H
