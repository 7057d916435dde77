// CVersionUpLog: the list readers.
#include "CVersionUpLog.h"
#include "common/record_codec.h"
#include "common/trace.h"
#include "version_log_signatures.h"

namespace {

// Reads the fields of one record on a chain; the record counts as started
// only when its first field is the next item.
class RecordReader {
  public:
    RecordReader(CSerializedMsg& codec, char* pos) : chain_(codec, pos) {}
    template <class T>
    void String(const char* name, T& value) {
        Read(name, value, &qel::ChainReader::String);
    }
    template <class T>
    void Int(const char* name, T& value) {
        Read(name, value, &qel::ChainReader::Int);
    }
    bool started() const { return started_; }
    char* pos() const { return chain_.pos(); }

  private:
    template <class T, class Method>
    void Read(const char* name, T& value, Method method) {
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

template <class Record>
void ReadList(CSerializedMsg& codec, char* body, std::vector<Record>& list) {
    char* pos = qel::ChainReader(codec, body).Skip(qel::ListHeader(Record())).pos();
    while (pos != nullptr && *pos != '\0') {
        Record record;
        RecordReader reader(codec, pos);
        qel::VisitFields(record, reader);
        if (!reader.started())
            break;
        list.push_back(std::move(record));
        pos = reader.pos();
    }
}

}  // namespace

void CVersionUpLog::toObject(char* body, std::vector<CVELMORA_QelVersionInfo>& list) {
    qel::TraceEnter(m_traceName, qel::sig::kQelVersionListReader);
    ReadList(*this, body, list);
    qel::TraceLeave(m_traceName, qel::sig::kQelVersionListReader);
}

void CVersionUpLog::toObject(char* body, std::vector<CVELMORA_UpdatePlans>& list) {
    qel::TraceEnter(m_traceName, qel::sig::kUpdatePlansListReader);
    ReadList(*this, body, list);
    qel::TraceLeave(m_traceName, qel::sig::kUpdatePlansListReader);
}

void CVersionUpLog::toObject(char* body, std::vector<CVELMORA_VersionUpdateLog>& list) {
    qel::TraceEnter(m_traceName, qel::sig::kVersionUpdateLogReader);
    ReadList(*this, body, list);
    qel::TraceLeave(m_traceName, qel::sig::kVersionUpdateLogReader);
}
