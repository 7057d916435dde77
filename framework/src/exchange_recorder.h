// Recording of the transport's exchanges into the file that QEL_RECORD names
// (docs/recording.md). The environment is read once per process, at the first
// exchange: with QEL_RECORD unset or empty each guard costs one check of a
// cached value and records nothing.
//
// The transport puts one guard where a request is sent and one where its
// reply is received; each looks at the transport's failure stage and errno
// when it goes out of scope. A failed send is written at once ("not-sent");
// a sent request waits, keyed by its transport, for the reply or the failure
// of the receive that follows. Passwords are masked before anything is
// written.
#ifndef QEL_FRAMEWORK_SRC_EXCHANGE_RECORDER_H
#define QEL_FRAMEWORK_SRC_EXCHANGE_RECORDER_H

#include <string>

#include "CFileTransfer.h"

namespace qel {

// QEL_RECORD as read at the first call; empty when not recording.
const std::string& RecordPath();
long long MonotonicMs();
void NoteSend(const CFileTransfer* transfer, const std::string& message,
              CFileTransfer::Stage failedStage, int failedErrno, long long startMs);
void NoteReceive(const CFileTransfer* transfer, CFileTransfer::Stage failedStage, int failedErrno,
                 const std::string& reply);

class RecordedSend {
  public:
    RecordedSend(const CFileTransfer* transfer, const std::string& message,
                 const CFileTransfer::Stage& failedStage, const int& failedErrno)
        : transfer_(transfer),
          message_(message),
          failedStage_(failedStage),
          failedErrno_(failedErrno),
          startMs_(RecordPath().empty() ? -1 : MonotonicMs()) {}
    ~RecordedSend() {
        if (startMs_ >= 0)
            NoteSend(transfer_, message_, failedStage_, failedErrno_, startMs_);
    }
    RecordedSend(const RecordedSend&) = delete;
    RecordedSend& operator=(const RecordedSend&) = delete;

  private:
    const CFileTransfer* transfer_;
    const std::string& message_;
    const CFileTransfer::Stage& failedStage_;
    const int& failedErrno_;
    long long startMs_;  // -1 when not recording
};

// `replyBytes()` gives the stored reply; it is called only when recording.
template <class ReplyBytes>
class RecordedReceive {
  public:
    RecordedReceive(const CFileTransfer* transfer, const CFileTransfer::Stage& failedStage,
                    const int& failedErrno, ReplyBytes replyBytes)
        : transfer_(transfer),
          failedStage_(failedStage),
          failedErrno_(failedErrno),
          replyBytes_(replyBytes),
          recording_(!RecordPath().empty()) {}
    ~RecordedReceive() {
        if (!recording_)
            return;
        try {
            NoteReceive(transfer_, failedStage_, failedErrno_, replyBytes_());
        } catch (...) {
            // Out of memory: the exchange goes on unrecorded.
        }
    }
    RecordedReceive(const RecordedReceive&) = delete;
    RecordedReceive& operator=(const RecordedReceive&) = delete;

  private:
    const CFileTransfer* transfer_;
    const CFileTransfer::Stage& failedStage_;
    const int& failedErrno_;
    ReplyBytes replyBytes_;
    bool recording_;
};

}  // namespace qel

#endif  // QEL_FRAMEWORK_SRC_EXCHANGE_RECORDER_H
