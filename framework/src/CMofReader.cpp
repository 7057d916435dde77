#include "CMofReader.h"

#include <strings.h>

#include <cctype>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "text_util.h"

namespace {

// One property value as the parser saw it.
struct Value {
    enum Kind { kNone, kString, kInteger, kList } kind = kNone;
    std::string text;
    long long integer = 0;
    std::vector<std::string> list;
};

// A recursive-descent reader over the text; every function returns false on
// a syntax error, and the caller stops there.
class MofParser {
  public:
    explicit MofParser(const std::string& text)
        : p_(text.data()), end_(text.data() + text.size()) {}

    void Run(std::vector<CMofContents>& out) {
        for (;;) {
            SkipBlank();
            if (p_ >= end_)
                return;
            if (*p_ == '#') {
                SkipLine();
            } else if (*p_ == '[') {
                if (!SkipBalanced('[', ']'))
                    return;
            } else if (IsIdentStart(*p_)) {
                std::string word = Identifier();
                if (strcasecmp(word.c_str(), "instance") == 0) {
                    CMofContents contents;
                    bool complete = false;
                    bool ok = Instance(contents, complete);
                    if (complete)
                        out.push_back(contents);
                    if (!ok)
                        return;
                } else if (!SkipDeclaration()) {
                    return;
                }
            } else if (*p_ == ';') {
                ++p_;
            } else {
                return;
            }
        }
    }

  private:
    static bool IsIdentStart(char c) {
        return std::isalpha(static_cast<unsigned char>(c)) || c == '_';
    }
    static bool IsIdentChar(char c) {
        return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
    }

    void SkipLine() {
        while (p_ < end_ && *p_ != '\n')
            ++p_;
    }

    // White space and both comment forms.
    void SkipBlank() {
        while (p_ < end_) {
            if (std::isspace(static_cast<unsigned char>(*p_))) {
                ++p_;
            } else if (end_ - p_ >= 2 && p_[0] == '/' && p_[1] == '/') {
                SkipLine();
            } else if (end_ - p_ >= 2 && p_[0] == '/' && p_[1] == '*') {
                p_ += 2;
                while (p_ < end_ && !(end_ - p_ >= 2 && p_[0] == '*' && p_[1] == '/'))
                    ++p_;
                p_ = (p_ < end_) ? p_ + 2 : end_;
            } else {
                return;
            }
        }
    }

    std::string Identifier() {
        const char* start = p_;
        while (p_ < end_ && IsIdentChar(*p_))
            ++p_;
        return std::string(start, p_);
    }

    bool Expect(char c) {
        SkipBlank();
        if (p_ < end_ && *p_ == c) {
            ++p_;
            return true;
        }
        return false;
    }

    // Skips a quoted literal starting at the quote; false when unterminated.
    bool SkipQuoted() {
        char quote = *p_++;
        while (p_ < end_ && *p_ != quote) {
            if (*p_ == '\\' && p_ + 1 < end_)
                ++p_;
            ++p_;
        }
        if (p_ >= end_)
            return false;
        ++p_;
        return true;
    }

    // Skips from `open` to its matching `close`, aware of literals and comments.
    bool SkipBalanced(char open, char close) {
        int depth = 0;
        while (p_ < end_) {
            SkipBlank();
            if (p_ >= end_)
                break;
            char c = *p_;
            if (c == '"' || c == '\'') {
                if (!SkipQuoted())
                    return false;
                continue;
            }
            ++p_;
            if (c == open)
                ++depth;
            if (c == close && --depth == 0)
                return true;
        }
        return false;
    }

    // A class, qualifier or other declaration: up to its ';' outside braces.
    bool SkipDeclaration() {
        while (p_ < end_) {
            SkipBlank();
            if (p_ >= end_)
                break;
            char c = *p_;
            if (c == '"' || c == '\'') {
                if (!SkipQuoted())
                    return false;
            } else if (c == '{') {
                if (!SkipBalanced('{', '}'))
                    return false;
            } else if (c == '(') {
                if (!SkipBalanced('(', ')'))
                    return false;
            } else if (c == '[') {
                if (!SkipBalanced('[', ']'))
                    return false;
            } else {
                ++p_;
                if (c == ';')
                    return true;
            }
        }
        return false;
    }

    // Appends a UTF-8 encoding of a \x escape's code point.
    static void AppendCodePoint(std::string& out, unsigned cp) {
        if (cp < 0x80) {
            out.push_back(static_cast<char>(cp));
        } else if (cp < 0x800) {
            out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
            out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
        } else {
            out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
            out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
            out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
        }
    }

    // One "..." literal, escapes decoded, appended to `out`.
    bool StringLiteral(std::string& out) {
        ++p_;  // opening quote
        while (p_ < end_ && *p_ != '"') {
            char c = *p_++;
            if (c != '\\') {
                out.push_back(c);
                continue;
            }
            if (p_ >= end_)
                return false;
            char e = *p_++;
            switch (e) {
                case 'b':
                    out.push_back('\b');
                    break;
                case 't':
                    out.push_back('\t');
                    break;
                case 'n':
                    out.push_back('\n');
                    break;
                case 'f':
                    out.push_back('\f');
                    break;
                case 'r':
                    out.push_back('\r');
                    break;
                case 'x':
                case 'X': {
                    unsigned cp = 0;
                    int digits = 0;
                    while (digits < 4 && p_ < end_ && qel::HexDigitValue(*p_) >= 0) {
                        cp = cp * 16 + static_cast<unsigned>(qel::HexDigitValue(*p_++));
                        ++digits;
                    }
                    if (digits == 0)
                        return false;
                    AppendCodePoint(out, cp);
                    break;
                }
                default:
                    out.push_back(e);
                    break;  // \" \' \\ and the rest as written
            }
        }
        if (p_ >= end_)
            return false;
        ++p_;
        return true;
    }

    // Adjacent literals are joined: "a" "b" is "ab".
    bool Strings(std::string& out) {
        while (p_ < end_ && *p_ == '"') {
            if (!StringLiteral(out))
                return false;
            SkipBlank();
        }
        return true;
    }

    // The integer part of a non-negative real, 0 when it does not fit.
    static unsigned long long RealToMagnitude(double real) {
        if (!(real >= 0.0 && real < 18446744073709551615.0))
            return 0;
        return static_cast<unsigned long long>(real);
    }

    // Decimal, 0x hexadecimal, leading-0 octal, binary with a b suffix, or a
    // real number (read, kept as its integer part).
    bool Number(long long& value) {
        bool negative = false;
        if (*p_ == '+' || *p_ == '-')
            negative = *p_++ == '-';
        const char* start = p_;
        while (p_ < end_ && (std::isalnum(static_cast<unsigned char>(*p_)) || *p_ == '.'))
            ++p_;
        std::string token(start, p_);
        if (token.empty())
            return false;
        unsigned long long magnitude = 0;
        char last = token.back();
        bool binary = (last == 'b' || last == 'B') && token.size() > 1 &&
                      token.find_first_not_of("01") == token.size() - 1;
        char* stop = nullptr;
        if (token.size() > 2 && token[0] == '0' && (token[1] == 'x' || token[1] == 'X')) {
            magnitude = std::strtoull(token.c_str() + 2, &stop, 16);
        } else if (binary) {
            magnitude = std::strtoull(token.substr(0, token.size() - 1).c_str(), &stop, 2);
            stop = nullptr;
        } else if (token.size() > 1 && token[0] == '0' &&
                   token.find_first_of(".eE") == std::string::npos) {
            magnitude = std::strtoull(token.c_str(), &stop, 8);
        } else {
            magnitude = RealToMagnitude(std::strtod(token.c_str(), &stop));
        }
        if (stop != nullptr && *stop != '\0')
            return false;
        // Two's-complement wrap on purpose: out-of-range numbers never trap.
        value = static_cast<long long>(negative ? 0ULL - magnitude : magnitude);
        return true;
    }

    bool Scalar(Value& value) {
        SkipBlank();
        if (p_ >= end_)
            return false;
        char c = *p_;
        if (c == '"') {
            value.kind = Value::kString;
            return Strings(value.text);
        }
        if (c == '\'') {
            const char* start = p_;
            if (!SkipQuoted())
                return false;
            value.kind = Value::kString;
            value.text.assign(start + 1, p_ - 1);
            return true;
        }
        if (c == '+' || c == '-' || std::isdigit(static_cast<unsigned char>(c)) || c == '.') {
            value.kind = Value::kInteger;
            return Number(value.integer);
        }
        if (IsIdentStart(c) || c == '$') {
            if (c == '$')
                ++p_;
            std::string word = Identifier();
            if (strcasecmp(word.c_str(), "true") == 0) {
                value.kind = Value::kInteger;
                value.integer = 1;
            }
            return true;  // false, null and alias references carry nothing we keep
        }
        return false;
    }

    bool PropertyValue(Value& value) {
        SkipBlank();
        if (p_ < end_ && *p_ == '{') {
            ++p_;
            value.kind = Value::kList;
            SkipBlank();
            if (p_ < end_ && *p_ == '}') {
                ++p_;
                return true;
            }
            for (;;) {
                Value element;
                if (!Scalar(element))
                    return false;
                if (element.kind == Value::kString) {
                    value.list.push_back(element.text);
                } else if (element.kind == Value::kInteger) {
                    value.list.push_back(std::to_string(element.integer));
                }
                SkipBlank();
                if (p_ < end_ && *p_ == ',') {
                    ++p_;
                    continue;
                }
                return Expect('}');
            }
        }
        return Scalar(value);
    }

    static void Assign(CMofContents& contents, const std::string& name, const Value& value) {
        auto is = [&](const char* want) { return strcasecmp(name.c_str(), want) == 0; };
        std::string* text = nullptr;
        if (is("Name"))
            text = &contents.Name;
        if (is("Description"))
            text = &contents.Description;
        if (is("ClassName"))
            text = &contents.ClassName;
        if (is("ProviderFile"))
            text = &contents.ProviderFile;
        if (text != nullptr && value.kind == Value::kString)
            *text = value.text;
        if (is("Kind") && value.kind == Value::kInteger) {
            contents.Kind = static_cast<int32_t>(value.integer);
        }
        if (is("Flags") && value.kind == Value::kInteger) {
            contents.Flags = static_cast<uint8_t>(value.integer);
        }
        if (is("Methods") && value.kind == Value::kList)
            contents.Methods = value.list;
    }

    // After "instance": "of Class [as $alias] { properties };". `complete`
    // turns true once the closing brace is read.
    bool Instance(CMofContents& contents, bool& complete) {
        SkipBlank();
        if (strcasecmp(Identifier().c_str(), "of") != 0)
            return false;
        SkipBlank();
        if (Identifier().empty())
            return false;
        SkipBlank();
        if (p_ < end_ && IsIdentStart(*p_)) {
            if (strcasecmp(Identifier().c_str(), "as") != 0)
                return false;
            SkipBlank();
            if (p_ < end_ && *p_ == '$')
                ++p_;
            if (Identifier().empty())
                return false;
        }
        if (!Expect('{'))
            return false;
        for (;;) {
            SkipBlank();
            if (p_ >= end_)
                return false;
            if (*p_ == '}') {
                ++p_;
                complete = true;
                return Expect(';');
            }
            if (*p_ == '[') {
                if (!SkipBalanced('[', ']'))
                    return false;
                continue;
            }
            if (!IsIdentStart(*p_))
                return false;
            std::string name = Identifier();
            if (!Expect('='))
                return false;
            Value value;
            if (!PropertyValue(value))
                return false;
            if (!Expect(';'))
                return false;
            Assign(contents, name, value);
        }
    }

    const char* p_;
    const char* end_;
};

}  // namespace

CMofReader::CMofReader(const std::string& path) : path_(path) {}

CMofReader::~CMofReader() = default;

void CMofReader::ParseContents() {
    contents_.clear();
    std::ifstream in(path_, std::ios::binary);
    if (!in)
        return;
    std::ostringstream text;
    text << in.rdbuf();
    contents_ = ParseText(text.str());
}

void CMofReader::GetMofContents(std::vector<CMofContents>& contents) {
    contents.insert(contents.end(), contents_.begin(), contents_.end());
}

std::vector<CMofContents> CMofReader::ParseText(const std::string& text) {
    std::vector<CMofContents> contents;
    MofParser(text).Run(contents);
    return contents;
}
