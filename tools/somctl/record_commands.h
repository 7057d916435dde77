// somctl record and somctl replay-check: recording a command's exchanges
// and checking a recording against the live service (docs/recording.md).
#ifndef QEL_TOOLS_SOMCTL_RECORD_COMMANDS_H
#define QEL_TOOLS_SOMCTL_RECORD_COMMANDS_H

#include <string>
#include <vector>

#include "output.h"

namespace somctl {

// `record FILE -- COMMAND [ARGS]`: runs COMMAND in a new somctl with
// QEL_RECORD=FILE and the same global options; its exit code.
int RecordCommand(Output& output, const std::vector<std::string>& args, const std::string& appKey,
                  bool yes);

// `replay-check FILE`: sends each recorded request to the live service and
// reports the replies that differ (masked passwords match any value).
// Requests that carry a password and records without a reply are skipped.
// 0 when every reply is equal, 5 when some differ, 3 or 4 when the service
// is not reachable or does not answer, 2 for a damaged recording.
int ReplayCheckCommand(Output& output, const std::vector<std::string>& args);

}  // namespace somctl

#endif  // QEL_TOOLS_SOMCTL_RECORD_COMMANDS_H
