// CFileUtility: where the suite's fixed files are found.
//
// Every fixed absolute path that the library or the framework opens goes
// through SystemPath, so that a whole installation (socket configuration,
// inventory, PCI ID database, MOF file, providers, status file) can live
// under a directory named by the environment variable QEL_SYSROOT. The
// variable is read with secure_getenv: a set-user-ID host ignores it.
#ifndef QEL_CFILEUTILITY_H
#define QEL_CFILEUTILITY_H

#include <string>

#include "QelExport.h"

class QEL_FRAMEWORK_API CFileUtility {
  public:
    // `path` with the value of QEL_SYSROOT in front when that is set and not
    // empty; otherwise `path` unchanged.
    static std::string SystemPath(const std::string& path);

    // The installation directory, SystemPath("/opt/velmora/qel"), for every kind.
    static std::string GetInstallPath(int kind);
};

#endif  // QEL_CFILEUTILITY_H
