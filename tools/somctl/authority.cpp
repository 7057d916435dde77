// The operating authority: the command that takes or releases it, and the
// guard that every change holds.
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>

#include "CFileUtility.h"
#include "CResultCode.h"
#include "commands.h"
#include "common/protocol.h"

namespace somctl {

namespace protocol = qel::protocol;

ChangeGuard::~ChangeGuard() {
    if (tookAuthority_)
        c_.som.ReleaseOperatingAuthority(protocol::kUpdateManager, c_.appKey);
    if (lockFd_ >= 0)
        close(lockFd_);  // releases the flock
}

int ChangeGuard::Acquire(const std::string& operation) {
    lockFd_ = open(CFileUtility::SystemPath(protocol::kSocketConfig).c_str(), O_RDONLY | O_CLOEXEC);
    if (lockFd_ >= 0) {
        while (flock(lockFd_, LOCK_EX) != 0 && errno == EINTR) {
        }
    }
    // Releasing with a key nobody uses tells whether anyone holds it, changing nothing.
    const HRESULT probe = c_.som.ReleaseOperatingAuthority(
        protocol::kUpdateManager, "somctl-probe-" + std::to_string(getpid()));
    if (CResultCode::IsTransport(static_cast<uint32_t>(probe)))
        return c_.output.Result(operation, probe);
    const HRESULT taken = c_.som.GetOperatingAuthority(protocol::kUpdateManager, c_.appKey);
    if (static_cast<uint32_t>(taken) == CResultCode::kAuthorityHeld) {
        return c_.output.Fail(operation, CResultCode::kAuthorityHeld,
                              "refused: another application key holds the operating authority "
                              "(this run uses '" +
                                  c_.appKey + "')",
                              kServiceError);
    }
    if (int rc = c_.output.Result(operation, taken))
        return rc;
    tookAuthority_ = probe == 0;
    return kOk;
}

int Authority(Context& c, const Args& args) {
    if (args.size() < 2 || args.size() > 3 || (args[1] != "take" && args[1] != "release"))
        return c.output.Usage("usage: somctl authority take|release [CLASS]");
    const std::string className = args.size() > 2 ? args[2] : protocol::kUpdateManager;
    const bool take = args[1] == "take";
    HRESULT rc = take ? c.som.GetOperatingAuthority(className, c.appKey)
                      : c.som.ReleaseOperatingAuthority(className, c.appKey);
    if (int exit = c.output.Result("authority " + args[1], rc))
        return exit;
    c.output.Message(std::string("operating authority ") + (take ? "held by " : "released by ") +
                     c.appKey);
    return kOk;
}

}  // namespace somctl
