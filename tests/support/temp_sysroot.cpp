#include "temp_sysroot.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace qel_test {

namespace fs = std::filesystem;

void MakeDirectories(const std::string& path) {
    std::error_code ignored;
    fs::create_directories(path, ignored);
}

int OpenDescriptorCount(const std::string& process) {
    const fs::path fds = "/proc/" + process + "/fd";
    return static_cast<int>(std::distance(fs::directory_iterator(fds), fs::directory_iterator()));
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
    std::error_code ignored;
    fs::remove_all(root_, ignored);
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
