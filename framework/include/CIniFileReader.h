// CIniFileReader: reads an INI file ("[section]", "key=value", comments
// starting with ';' or '#', blanks around names and values trimmed).
//
// The whole file is parsed once, at construction, with the inih library. A
// missing or unreadable file reads as a file without sections. Lookups keep
// the first value of a key that a section repeats. Not thread-safe.
#ifndef QEL_CINIFILEREADER_H
#define QEL_CINIFILEREADER_H

#include <list>
#include <map>
#include <string>
#include <vector>

#include "QelExport.h"

class QEL_FRAMEWORK_API CIniFileReader {
  public:
    explicit CIniFileReader(const std::string& path);
    ~CIniFileReader();

    // Stores the value of `key` in `section` into `value`; false (and
    // `value` untouched) when either is missing.
    bool find_section(const std::string& section, const std::string& key, std::string& value);

    // Appends the section names in file order, each once, sections without
    // keys included.
    void list_section(std::list<std::string>& sections);

    // Forgets the parsed content; later lookups find nothing.
    void close();

  private:
    friend struct IniParseContext;
    std::vector<std::string> sectionOrder_;
    std::map<std::string, std::map<std::string, std::string>> values_;
};

#endif  // QEL_CINIFILEREADER_H
