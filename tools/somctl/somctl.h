// somctl: the command-line tool over libqel_SomIf for people who operate a
// machine. RunSomctl parses the arguments, runs one command and writes its
// result to `out` (a table, or JSON with --json) and problems to `err`.
#ifndef QEL_TOOLS_SOMCTL_SOMCTL_H
#define QEL_TOOLS_SOMCTL_SOMCTL_H

#include <ostream>
#include <string>
#include <vector>

namespace somctl {

// Exit codes, one per kind of failure.
enum ExitCode {
    kOk = 0,
    kUsage = 2,         // unknown command or bad arguments
    kUnreachable = 3,   // the request could not be sent (service not running)
    kNoReply = 4,       // the service took the request but did not answer
    kServiceError = 5,  // the service answered with an error code
};

int RunSomctl(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);

}  // namespace somctl

#endif  // QEL_TOOLS_SOMCTL_SOMCTL_H
