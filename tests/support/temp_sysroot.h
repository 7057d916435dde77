// A temporary installation root for one test: a fresh directory that
// QEL_SYSROOT points at while the object lives. Files of the suite are
// written under it by their absolute suite paths.
#ifndef QEL_TESTS_SUPPORT_TEMP_SYSROOT_H
#define QEL_TESTS_SUPPORT_TEMP_SYSROOT_H

#include <string>

namespace qel_test {

class TempSysroot {
  public:
    TempSysroot();
    ~TempSysroot();
    TempSysroot(const TempSysroot&) = delete;
    TempSysroot& operator=(const TempSysroot&) = delete;

    const std::string& root() const { return root_; }
    // root + path.
    std::string Path(const std::string& suitePath) const { return root_ + suitePath; }
    // Writes `content` at root + suitePath, creating the directories.
    void WriteFile(const std::string& suitePath, const std::string& content,
                   unsigned mode = 0644) const;
    void RemoveFile(const std::string& suitePath) const;

  private:
    std::string root_;
    std::string previous_;
    bool hadPrevious_ = false;
};

// Creates every directory of `path` (like mkdir -p).
void MakeDirectories(const std::string& path);
// Counts the open file descriptors of a process (its pid, or "self": then
// the listing's own descriptor is counted too).
int OpenDescriptorCount(const std::string& process = "self");

}  // namespace qel_test

#endif  // QEL_TESTS_SUPPORT_TEMP_SYSROOT_H
