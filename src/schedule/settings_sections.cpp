// CUpDownSchedule: the sections of the settings records.
#include "CUpDownSchedule.h"
#include "common/record_codec.h"
#include "common/trace.h"
#include "schedule_signatures.h"

namespace {

// A section: its "class" item, then one item per field.
template <class Record>
void WriteSection(const Record& record, std::string& out) {
    qel::item::AppendItem(out, qel::item::kTagClass, qel::SectionName(record), std::string());
    qel::ItemWriter writer(out);
    qel::VisitFields(record, writer);
}

template <class Record>
void ReadSection(qel::ChainReader& reader, Record& record) {
    reader.Skip(qel::SectionName(record));
    qel::VisitFields(record, reader);
}

}  // namespace

void CUpDownSchedule::toString(const CVelmora_PriorityUpdateParam& param, std::string& out) {
    qel::TraceEnter(traceName(), qel::sig::kPriorityWriter);
    WriteSection(param, out);
    qel::TraceLeave(traceName(), qel::sig::kPriorityWriter);
}

void CUpDownSchedule::toString(const CVELMORA_UpdateSchedule& schedule, std::string& out) {
    qel::TraceEnter(traceName(), qel::sig::kUpdateScheduleWriter);
    WriteSection(schedule, out);
    qel::TraceLeave(traceName(), qel::sig::kUpdateScheduleWriter);
}

void CUpDownSchedule::toString(const CVELMORA_DownloadSetting& setting, std::string& out) {
    qel::TraceEnter(traceName(), qel::sig::kDownloadSettingWriter);
    WriteSection(setting, out);
    qel::TraceLeave(traceName(), qel::sig::kDownloadSettingWriter);
}

void CUpDownSchedule::toString(const CVELMORA_DownloadSetting& setting,
                               const CVELMORA_DownloadSchedule& schedule, std::string& out) {
    qel::TraceEnter(traceName(), qel::sig::kCombinedDownloadWriter);
    WriteSection(schedule, out);
    WriteSection(setting, out);
    qel::TraceLeave(traceName(), qel::sig::kCombinedDownloadWriter);
}

void CUpDownSchedule::toObject(char* pos, CVelmora_PriorityUpdateParam& param) {
    qel::TraceEnter(traceName(), qel::sig::kPriorityReader);
    qel::ChainReader reader(pos);
    qel::VisitFields(param, reader);  // no "class" item: the chain starts at "AppKey"
    qel::TraceLeave(traceName(), qel::sig::kPriorityReader);
}

void CUpDownSchedule::toObject(char* pos, CVELMORA_UpdateSchedule& schedule) {
    qel::TraceEnter(traceName(), qel::sig::kUpdateScheduleReader);
    qel::ChainReader reader(pos);
    ReadSection(reader, schedule);
    qel::TraceLeave(traceName(), qel::sig::kUpdateScheduleReader);
}

void CUpDownSchedule::toObject(char* pos, CVELMORA_DownloadSchedule& schedule,
                               CVELMORA_DownloadSetting& setting) {
    qel::TraceEnter(traceName(), qel::sig::kCombinedDownloadReader);
    qel::ChainReader reader(pos);
    ReadSection(reader, schedule);
    ReadSection(reader, setting);
    qel::TraceLeave(traceName(), qel::sig::kCombinedDownloadReader);
}
