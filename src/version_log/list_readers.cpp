// CVersionUpLog: the list readers.
#include <cstring>

#include "CVersionUpLog.h"
#include "common/record_codec.h"
#include "common/trace.h"
#include "version_log_signatures.h"

namespace {

// Reads the fields of one record on a chain; the record counts as started
// only when its first field is the next item.
class RecordReader {
  public:
    explicit RecordReader(char* pos) : chain_(pos) {}
    template <class T>
    QEL_INLINE_READER void String(const char* name, T& value) {
        Read(name, value, &qel::ChainReader::String);
    }
    template <class T>
    QEL_INLINE_READER void Int(const char* name, T& value) {
        Read(name, value, &qel::ChainReader::Int);
    }
    bool started() const { return started_; }
    char* pos() const { return chain_.pos(); }

  private:
    template <class T, class Method>
    QEL_INLINE_READER void Read(const char* name, T& value, Method method) {
        if (!started_)
            return;
        char* before = chain_.pos();
        (chain_.*method)(name, value);
        if (first_ && (chain_.pos() == nullptr || chain_.pos() == before))
            started_ = false;
        first_ = false;
    }

    qel::ChainReader chain_;
    bool first_ = true;
    bool started_ = true;
};

// Room for the records still to come, judged by the bytes the first one
// took: the list's records have the same fields, so this is about the count,
// and never more than the rest of the body could hold.
template <class Record>
void ReserveForRest(std::vector<Record>& list, const char* first, const char* rest) {
    const std::size_t recordBytes = static_cast<std::size_t>(rest - first);
    if (recordBytes != 0)
        list.reserve(list.size() + std::strlen(rest) / recordBytes + 1);
}

template <class Record>
void ReadList(char* body, std::vector<Record>& list) {
    char* pos = qel::ChainReader(body).Skip(qel::ListHeader(Record())).pos();
    bool reserved = false;
    while (pos != nullptr && *pos != '\0') {
        Record record;
        RecordReader reader(pos);
        qel::VisitFields(record, reader);
        if (!reader.started())
            break;
        list.push_back(std::move(record));
        if (!reserved && reader.pos() != nullptr) {
            ReserveForRest(list, pos, reader.pos());
            reserved = true;
        }
        pos = reader.pos();
    }
}

}  // namespace

void CVersionUpLog::toObject(char* body, std::vector<CVELMORA_QelVersionInfo>& list) {
    qel::TraceEnter(traceName(), qel::sig::kQelVersionListReader);
    ReadList(body, list);
    qel::TraceLeave(traceName(), qel::sig::kQelVersionListReader);
}

void CVersionUpLog::toObject(char* body, std::vector<CVELMORA_UpdatePlans>& list) {
    qel::TraceEnter(traceName(), qel::sig::kUpdatePlansListReader);
    ReadList(body, list);
    qel::TraceLeave(traceName(), qel::sig::kUpdatePlansListReader);
}

void CVersionUpLog::toObject(char* body, std::vector<CVELMORA_VersionUpdateLog>& list) {
    qel::TraceEnter(traceName(), qel::sig::kVersionUpdateLogReader);
    ReadList(body, list);
    qel::TraceLeave(traceName(), qel::sig::kVersionUpdateLogReader);
}
