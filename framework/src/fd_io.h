// Writing a whole buffer to a descriptor (not exported): the framework's
// recorder and somd's replies and state file share it.
#ifndef QEL_FRAMEWORK_SRC_FD_IO_H
#define QEL_FRAMEWORK_SRC_FD_IO_H

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <string>

namespace qel {

enum class Descriptor { kFile, kSocket };

// Writes all of `data`, again after an interruption; false on any other
// failure. A socket is written with MSG_NOSIGNAL, so that a peer that has
// gone makes the write fail instead of raising SIGPIPE.
inline bool WriteAll(int fd, const std::string& data, Descriptor kind = Descriptor::kFile) {
    std::size_t done = 0;
    while (done < data.size()) {
        const char* from = data.data() + done;
        const std::size_t left = data.size() - done;
        const ssize_t n = kind == Descriptor::kSocket ? send(fd, from, left, MSG_NOSIGNAL)
                                                      : write(fd, from, left);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        done += static_cast<std::size_t>(n);
    }
    return true;
}

}  // namespace qel

#endif  // QEL_FRAMEWORK_SRC_FD_IO_H
