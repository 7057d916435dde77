// Realistic bodies for the benchmarks, generated at a requested size, and
// the same content as JSON for the peers.
#ifndef QEL_BENCH_BENCH_DATA_H
#define QEL_BENCH_BENCH_DATA_H

#include <string>
#include <vector>

#include "ProviderManageRecords.h"
#include "VersionListRecords.h"

namespace bench {

// A generic body: records of a string, an int, a string array and a flag.
std::string GenericBody(std::size_t bytes);
std::string GenericJson(std::size_t bytes);

// A run of "string[]" items (log lines).
std::string StringArrayBody(std::size_t bytes);
std::string StringArrayJson(std::size_t bytes);

// A device provider with as many devices as fit in `bytes` of plain text.
CVelmora_DevProviderManageInfo Provider(std::size_t bytes);
std::string ProviderText(const CVelmora_DevProviderManageInfo& info);
std::string ProviderJson(const CVelmora_DevProviderManageInfo& info);

// The three version-list records: as many as fill `bytes` of list text
// (plans with realistic values, the others "Field-i"), the list text (the
// typed and the WBEM form are the same bytes) and the same records as JSON.
template <class Record>
std::vector<Record> Records(std::size_t bytes);
template <class Record>
std::string ListText(const std::vector<Record>& records);
template <class Record>
std::string ListJson(const std::vector<Record>& records);
std::string RegistrationText(std::size_t bytes);
std::string ConformityText(std::size_t bytes);

}  // namespace bench

#endif  // QEL_BENCH_BENCH_DATA_H
