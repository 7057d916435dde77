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
// Threads: an object holds no lock and keeps no state between calls; make
// the calls on one object one at a time. Separate objects are independent.
#ifndef QEL_CSOMIF_H
#define QEL_CSOMIF_H

#include <cstdint>
#include <string>

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

    // The header: "%08d%08lx%s/%s%08d%08d" of header length, 0xcafefeed,
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

private:
    std::string m_traceName;
};

#endif  // QEL_CSOMIF_H
