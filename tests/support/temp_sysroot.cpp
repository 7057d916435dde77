#include "temp_sysroot.h"

#include <dirent.h>
#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace qel_test {

void MakeDirectories(const std::string& path) {
    for (std::string::size_type at = 1; at != std::string::npos;) {
        at = path.find('/', at + 1);
        mkdir(path.substr(0, at).c_str(), 0755);
    }
}

void RemoveTree(const std::string& path) {
    nftw(
        path.c_str(),
        [](const char* file, const struct stat*, int, struct FTW*) { return remove(file); }, 16,
        FTW_DEPTH | FTW_PHYS);
}

int OpenDescriptorCount() {
    int count = 0;
    if (DIR* dir = opendir("/proc/self/fd")) {
        while (readdir(dir) != nullptr)
            ++count;
        closedir(dir);
    }
    return count - 3;  // ".", ".." and the directory's own descriptor
}

TempSysroot::TempSysroot() {
    const char* tmp = std::getenv("TMPDIR");
    std::string pattern = std::string(tmp != nullptr && *tmp ? tmp : "/tmp") + "/qelsomif.XXXXXX";
    if (mkdtemp(&pattern[0]) == nullptr)
        throw std::runtime_error("mkdtemp failed");
    root_ = pattern;
    if (const char* previous = std::getenv("QEL_SYSROOT")) {
        hadPrevious_ = true;
        previous_ = previous;
    }
    setenv("QEL_SYSROOT", root_.c_str(), 1);
}

TempSysroot::~TempSysroot() {
    if (hadPrevious_) {
        setenv("QEL_SYSROOT", previous_.c_str(), 1);
    } else {
        unsetenv("QEL_SYSROOT");
    }
    RemoveTree(root_);
}

void TempSysroot::WriteFile(const std::string& suitePath, const std::string& content,
                            unsigned mode) const {
    const std::string path = Path(suitePath);
    MakeDirectories(path.substr(0, path.rfind('/')));
    std::ofstream(path, std::ios::binary | std::ios::trunc) << content;
    chmod(path.c_str(), mode);
}

void TempSysroot::RemoveFile(const std::string& suitePath) const {
    unlink(Path(suitePath).c_str());
}

}  // namespace qel_test
