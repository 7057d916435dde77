// CMofReader and CMofContents: the provider instances of the suite's MOF file.
//
// The reader accepts standard MOF text: comments ("//", "/* */"), "#pragma"
// lines, qualifier lists, qualifier and class declarations (skipped), and
// instance declarations. Every "instance of <AnyClass> { ... };" yields one
// CMofContents, in file order. Properties are matched by name, ignoring case;
// other properties are ignored and missing ones stay empty or 0. A syntax
// error ends the parse with the instances read so far; no input crashes it.
#ifndef QEL_CMOFREADER_H
#define QEL_CMOFREADER_H

#include <cstdint>
#include <string>
#include <vector>

#include "QelExport.h"

// One provider instance. Copyable.
class QEL_FRAMEWORK_API CMofContents {
  public:
    std::string Name;          // first text field
    std::string Description;   // second text field
    std::string ClassName;     // third text field: the provider's class
    std::string ProviderFile;  // fourth text field: the provider's INI file
    int32_t Kind = 0;          // 1 device service, 2 tool service
    uint8_t Flags = 0;
    std::vector<std::string> Methods;
};

class QEL_FRAMEWORK_API CMofReader {
  public:
    explicit CMofReader(const std::string& path);
    ~CMofReader();

    // Reads and parses the whole file; a missing file gives no instances.
    void ParseContents();

    // Appends the instances parsed so far to `contents`.
    void GetMofContents(std::vector<CMofContents>& contents);

    // Parses MOF text held in memory (the same rules as a file).
    static std::vector<CMofContents> ParseText(const std::string& text);

  private:
    std::string path_;
    std::vector<CMofContents> contents_;
};

#endif  // QEL_CMOFREADER_H
