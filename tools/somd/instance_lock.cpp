#include "instance_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace somd {

namespace {

std::string ReadHolder(int fd) {
    char text[512];
    const ssize_t n = pread(fd, text, sizeof text - 1, 0);
    std::string holder(text, n > 0 ? static_cast<std::size_t>(n) : 0);
    while (!holder.empty() && holder.back() == '\n')
        holder.pop_back();
    return holder.empty() ? "an unknown process" : holder;
}

}  // namespace

InstanceLock::InstanceLock(const std::string& statePath, const std::string& socketPath) {
    const std::string path = statePath + ".lock";
    fd_ = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (fd_ < 0)
        throw std::runtime_error("cannot open " + path + ": " + std::strerror(errno));
    if (flock(fd_, LOCK_EX | LOCK_NB) != 0) {
        const int error = errno;
        const std::string holder = ReadHolder(fd_);
        close(fd_);
        if (error == EWOULDBLOCK) {
            throw std::runtime_error("another somd already serves this installation (" + holder +
                                     "); not starting");
        }
        throw std::runtime_error("cannot lock " + path + ": " + std::strerror(error));
    }
    const std::string holder = "pid " + std::to_string(getpid()) + ", socket " + socketPath + "\n";
    if (ftruncate(fd_, 0) != 0 ||
        pwrite(fd_, holder.data(), holder.size(), 0) != static_cast<ssize_t>(holder.size())) {
        close(fd_);
        throw std::runtime_error("cannot write " + path + ": " + std::strerror(errno));
    }
}

InstanceLock::~InstanceLock() {
    // The file stays: removing it would let a third somd lock a fresh file
    // while a second still waits on the old one.
    close(fd_);
}

}  // namespace somd
