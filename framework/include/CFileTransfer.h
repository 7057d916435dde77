// CFileTransfer: the message transport to the local SOM service.
//
// One connection per exchange over a Unix-domain stream socket: SendMessage
// connects and writes a whole request, RecvMessage reads the one reply and
// closes the connection. The socket's path and the time-out come from a
// configuration file of `key=value` lines, read again at every connect whose
// file differs from the one read last (device, inode, size, change and
// modification times):
//
//     socket=/run/qel/som.sock   # required
//     timeout=300                # seconds for the connect, the send and the
//                                # whole receive; 0 waits without limit
//
// Blanks around keys and values are trimmed; lines starting with '#' and
// empty lines are ignored, and a '#' at the start of a value or after a blank
// begins a comment. A time-out that is not whole seconds is reported in the
// trace (level 2) when the file is read, and the one before it (at first 300)
// is kept. An absolute configuration path is resolved through
// CFileUtility::SystemPath; the socket path inside it is used as written.
// Nothing here raises SIGPIPE, writes outside the caller's buffer, or waits
// past the time-out.
//
// An object serves one exchange at a time; separate objects are independent.
#ifndef QEL_CFILETRANSFER_H
#define QEL_CFILETRANSFER_H

#include <cstddef>
#include <memory>
#include <string>
#include <utility>

#include "QelExport.h"

class QEL_FRAMEWORK_API CFileTransfer {
  public:
    static const int kDefaultTimeoutSeconds = 300;

    CFileTransfer(std::string name, std::string configFile);
    virtual ~CFileTransfer();
    CFileTransfer(const CFileTransfer&) = delete;
    CFileTransfer& operator=(const CFileTransfer&) = delete;

    // Connects and writes the whole message. Returns the number of bytes
    // sent (capped at INT_MAX), or -1 on any failure: no configuration, no
    // `socket` line, nothing listening, refused, time-out, peer gone.
    int SendMessage(std::string message);

    // Reads the reply of the last SendMessage: `headerLength` header bytes,
    // then as many body bytes as the header's last 8 characters say in
    // decimal (when they are not 8 digits: until the service closes). Stores
    // at most bufferSize - 1 bytes and a NUL, drains and drops the rest,
    // closes the connection and returns the number of bytes stored. Returns
    // -1 when the connection closes before a whole header came, on a
    // time-out, on a socket error, or without a connection.
    int RecvMessage(char* buffer, int bufferSize, int headerLength);
    // A header ends with the body's length in this many decimal digits; the
    // one fact of the header layout that the transport itself reads.
    static constexpr int kLengthFieldWidth = 8;

    // One whole exchange: the request written as SendMessage writes it, then
    // the reply read as RecvMessage reads it into storage that this object
    // keeps for the next exchange, grown to what the reply's body-length field
    // announces, at most maxReplySize - 1 bytes and a NUL. Returns the number
    // of bytes stored, kNotSent when the request did not go out, or -1 when
    // the reply did not come whole (what came is still stored). ReplyBytes()
    // reads the reply until the next exchange.
    static constexpr int kNotSent = -2;
    int Exchange(const std::string& request, int headerLength, std::size_t maxReplySize);
    // The same exchange into the caller's buffer, as RecvMessage fills it.
    int Exchange(const std::string& request, int headerLength, char* buffer, int bufferSize);
    // The reply stored by the last Exchange into this object's storage.
    char* ReplyBytes();

    // Reads a configuration file as the transport does (an absolute path
    // through CFileUtility::SystemPath); false without a `socket` line.
    static bool ReadConfiguration(const std::string& configFile, std::string& socketPath,
                                  int& timeoutSeconds);

    // Where the last SendMessage or RecvMessage failed, kNone after success.
    enum class Stage { kNone, kConfiguration, kConnect, kSend, kReceive };
    Stage LastFailedStage() const { return lastFailedStage_; }
    // The errno of that failure: ETIMEDOUT when the time-out expired; from
    // the connect ENOENT, ECONNREFUSED, EACCES, ENAMETOOLONG (the path does
    // not fit a socket address); ECONNRESET when the service closed before a
    // whole header; for the configuration the error of opening the file, or
    // 0 when it has no `socket` line.
    int LastErrno() const { return lastErrno_; }
    // The socket path and the time-out read at the last SendMessage.
    const std::string& SocketPath() const { return socketPath_; }
    int TimeoutSeconds() const { return timeoutSeconds_; }
    // Connects to `path` instead of the socket that the configuration file
    // names (an operator's override); the time-out still comes from the file,
    // or is the default when the file cannot be read. Empty undoes it.
    void OverrideSocketPath(std::string path) { socketOverride_ = std::move(path); }

  protected:
    // The name this object traces under.
    const std::string& TraceName() const { return name_; }

  private:
    class ReplySink;
    struct ConfigurationStamp {
        std::string path;
        unsigned long long device = 0, inode = 0;
        long long size = -1, changed = 0, modified = 0;
        bool operator==(const ConfigurationStamp& other) const;
    };

    void CloseConnection();
    // The socket path and time-out, read again only when the file changed.
    bool LoadConfiguration();
    int Send(const std::string& message);
    int Receive(ReplySink& sink, int headerLength);
    // Where a whole request goes out and its reply comes back.
    int ExchangeThrough(const std::string& request, int headerLength, ReplySink& sink);
    // Records where and why (errno) an exchange failed; returns -1.
    int Fail(Stage stage);

    std::string name_;
    std::string configFile_;
    int fd_ = -1;
    int timeoutSeconds_ = kDefaultTimeoutSeconds;
    std::string socketPath_;
    std::string socketOverride_;
    Stage lastFailedStage_ = Stage::kNone;
    int lastErrno_ = 0;
    ConfigurationStamp configurationStamp_;
    std::unique_ptr<char[]> replyStorage_;
    std::size_t replyCapacity_ = 0;
};

#endif  // QEL_CFILETRANSFER_H
