#include "CIniFileReader.h"

#include <ini.h>

#include <cstdio>
#include <cstring>
#include <set>

#include "text_util.h"

// State of one parse; the reader and the handler of inih both see it.
struct IniParseContext {
    CIniFileReader* reader;
    FILE* file;
    std::set<std::string> seen;

    void AddSection(const std::string& name) {
        if (seen.insert(name).second)
            reader->sectionOrder_.push_back(name);
    }
    void AddValue(const char* section, const char* name, const char* value) {
        const std::string trimmed = qel::TrimBlanks(section);
        AddSection(trimmed);
        reader->values_[trimmed].emplace(name, value != nullptr ? value : "");
    }
};

namespace {

// inih reports only key=value lines (it is built without the new-section
// callback), so a section without keys would be invisible. The line reader
// below hands inih each line and notes section headers on the way, with
// inih's own rule: after leading blanks a '[', the name up to ']', trimmed.
void NoteSectionHeader(IniParseContext& ctx, const char* line) {
    while (*line == ' ' || *line == '\t')
        ++line;
    if (*line != '[')
        return;
    const char* close = std::strchr(line + 1, ']');
    if (close == nullptr)
        return;
    ctx.AddSection(qel::TrimBlanks(std::string(line + 1, close)));
}

char* ReadLine(char* str, int num, void* stream) {
    IniParseContext& ctx = *static_cast<IniParseContext*>(stream);
    char* line = std::fgets(str, num, ctx.file);
    if (line != nullptr)
        NoteSectionHeader(ctx, line);
    return line;
}

int OnValue(void* user, const char* section, const char* name, const char* value) {
    static_cast<IniParseContext*>(user)->AddValue(section, name, value);
    return 1;
}

}  // namespace

CIniFileReader::CIniFileReader(const std::string& path) {
    FILE* file = std::fopen(path.c_str(), "r");
    if (file == nullptr)
        return;
    IniParseContext ctx{this, file, {}};
    ini_parse_stream(&ReadLine, &ctx, &OnValue, &ctx);
    std::fclose(file);
}

CIniFileReader::~CIniFileReader() = default;

bool CIniFileReader::find_section(const std::string& section, const std::string& key,
                                  std::string& value) {
    auto sec = values_.find(section);
    if (sec == values_.end())
        return false;
    auto it = sec->second.find(key);
    if (it == sec->second.end())
        return false;
    value = it->second;
    return true;
}

void CIniFileReader::list_section(std::list<std::string>& sections) {
    sections.insert(sections.end(), sectionOrder_.begin(), sectionOrder_.end());
}

void CIniFileReader::close() {
    sectionOrder_.clear();
    values_.clear();
}
