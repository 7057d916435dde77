// somd's accept loop: one thread per connection, with a cap on how many run
// at once, a deadline for reading each whole request, and back-off instead of
// an abort or a busy loop when descriptors, memory or threads run out.
#ifndef QEL_TOOLS_SOMD_LISTENER_H
#define QEL_TOOLS_SOMD_LISTENER_H

#include <functional>

namespace somd {

struct ListenerLimits {
    int maxConnections = 256;
    // From accept to the last byte of the request; slow or stalled senders
    // are cut off when it passes, however they trickle.
    int requestDeadlineMs = 5000;
};

// Serves one connection on `fd`; calls `requestRead()` once the whole
// request is in (after which the deadline no longer applies: a bulk run may
// take longer). Must not close `fd`.
typedef std::function<void(int fd, const std::function<void()>& requestRead)> ConnectionHandler;

// Accepts on `listenFd` until `stopFd` becomes readable, then cuts off the
// connections still reading, joins every connection thread and returns.
void RunAcceptLoop(int listenFd, int stopFd, const ListenerLimits& limits,
                   const ConnectionHandler& handler);

}  // namespace somd

#endif  // QEL_TOOLS_SOMD_LISTENER_H
