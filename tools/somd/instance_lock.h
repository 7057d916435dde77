// One somd per installation: an flock on a file beside the state file that
// names the holder's pid and socket, so that a second start can say who runs.
#ifndef QEL_TOOLS_SOMD_INSTANCE_LOCK_H
#define QEL_TOOLS_SOMD_INSTANCE_LOCK_H

#include <string>

namespace somd {

class InstanceLock {
  public:
    // Takes the lock at `statePath` + ".lock". Throws std::runtime_error
    // naming the running somd (pid and socket) when another holds it.
    InstanceLock(const std::string& statePath, const std::string& socketPath);
    ~InstanceLock();
    InstanceLock(const InstanceLock&) = delete;
    InstanceLock& operator=(const InstanceLock&) = delete;

  private:
    int fd_ = -1;
};

}  // namespace somd

#endif  // QEL_TOOLS_SOMD_INSTANCE_LOCK_H
