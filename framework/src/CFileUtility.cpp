#include "CFileUtility.h"

#include <cstdlib>

namespace {
const char kInstallPath[] = "/opt/velmora/qel";
}

std::string CFileUtility::SystemPath(const std::string& path) {
    const char* root = secure_getenv("QEL_SYSROOT");
    if (root == nullptr || *root == '\0')
        return path;
    return std::string(root) + path;
}

std::string CFileUtility::GetInstallPath(int) {
    return SystemPath(kInstallPath);
}
