#include "recording.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

#include "message_format.h"
#include "text_util.h"

namespace qel {
namespace recording {
namespace {

const std::size_t kField = message_format::kFieldWidth;
const char kBodyIndent[] = "  ";
const std::size_t kFieldsPerItem = 3;  // type, name and value, each closed by ';'

bool AllDigits(const std::string& text) {
    for (char c : text) {
        if (c < '0' || c > '9')
            return false;
    }
    return !text.empty();
}

// The header length that the message's first 8 characters give, or 0 when
// they do not describe a header that the message holds.
std::size_t HeaderLength(const std::string& message) {
    if (message.size() < kField || !AllDigits(message.substr(0, kField)))
        return 0;
    const unsigned long length = std::strtoul(message.substr(0, kField).c_str(), nullptr, 10);
    return length >= static_cast<unsigned long>(message_format::kHeaderFixedLength) &&
                   length <= message.size()
               ? length
               : 0;
}

// An item name, or the last step of an element path ("Settings[0]/ProxyPassword").
bool IsSecretName(const std::string& field) {
    const std::string::size_type slash = field.rfind('/');
    const std::string name = slash == std::string::npos ? field : field.substr(slash + 1);
    for (const char* secret : message_format::kSecretItems) {
        if (name == secret)
            return true;
    }
    return false;
}

// The body with every non-empty password value replaced by `mask`.
std::string ReplaceSecrets(const std::string& body, const char* mask) {
    std::string masked;
    masked.reserve(body.size());
    bool maskThis = false;
    std::string::size_type at = 0;
    while (at < body.size()) {
        std::string::size_type end = body.find(';', at);
        const std::string field = body.substr(at, end == std::string::npos ? end : end - at);
        // An empty password stays empty: it tells nothing.
        masked += maskThis && !field.empty() ? mask : field;
        if (end == std::string::npos)
            break;
        masked += ';';
        maskThis = !maskThis && IsSecretName(field);
        at = end + 1;
    }
    return masked;
}

// The body cut after every item's third ';' so that each item has a line.
std::vector<std::string> BodyPieces(const std::string& body) {
    std::vector<std::string> pieces;
    std::string::size_type start = 0, at = 0;
    std::size_t fields = 0;
    while ((at = body.find(';', at)) != std::string::npos) {
        ++at;
        if (++fields % kFieldsPerItem == 0) {
            pieces.push_back(body.substr(start, at - start));
            start = at;
        }
    }
    if (start < body.size())
        pieces.push_back(body.substr(start));
    return pieces;
}

void AppendMessage(std::string& out, const char* keyword, const std::string& message) {
    const std::size_t header = HeaderLength(message);
    const std::size_t split = header == 0 ? message.size() : header;
    out.append(keyword).append(" ").append(Escape(message.substr(0, split))).append("\n");
    for (const std::string& piece : BodyPieces(message.substr(split)))
        out.append(kBodyIndent).append(Escape(piece)).append("\n");
}

// The bytes that an escaped line stands for; false on a broken escape.
bool Unescape(const std::string& text, std::string& bytes) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\') {
            bytes += text[i];
            continue;
        }
        const char kind = i + 1 < text.size() ? text[++i] : '\0';
        if (kind == '\\') {
            bytes += '\\';
        } else if (kind == 'n') {
            bytes += '\n';
        } else if (kind == 'r') {
            bytes += '\r';
        } else if (kind == 't') {
            bytes += '\t';
        } else if (kind == 'x' && i + 2 < text.size() && qel::HexDigitValue(text[i + 1]) >= 0 &&
                   qel::HexDigitValue(text[i + 2]) >= 0) {
            bytes += static_cast<char>(qel::HexDigitValue(text[i + 1]) * 16 +
                                       qel::HexDigitValue(text[i + 2]));
            i += 2;
        } else {
            return false;
        }
    }
    return true;
}

// "<when> <N>ms" after the keyword "exchange".
bool ParseExchangeLine(const std::string& rest, Exchange& exchange) {
    std::istringstream words(rest);
    std::string when, took, extra;
    if (!(words >> when >> took) || (words >> extra) || took.size() < 3 ||
        took.compare(took.size() - 2, 2, "ms") != 0 || took.size() > 17)
        return false;
    const std::string digits = took.substr(0, took.size() - 2);
    if (!AllDigits(digits))
        return false;
    exchange.when = when;
    exchange.milliseconds = std::strtoll(digits.c_str(), nullptr, 10);
    return true;
}

// Reads the records line by line; every damage is a FormatError naming its line.
class Parser {
  public:
    std::vector<Exchange> Parse(const std::string& text) {
        std::size_t start = 0;
        while (start < text.size()) {
            std::size_t end = text.find('\n', start);
            if (end == std::string::npos)
                end = text.size();
            std::string line = text.substr(start, end - start);
            if (!line.empty() && line.back() == '\r')
                line.pop_back();  // a file saved with CRLF line ends
            Line(++lineNumber_, line);
            start = end + 1;
        }
        if (lineNumber_ == 0)
            throw FormatError(1, std::string("empty file; expected \"") + kVersionLine + "\"");
        if (inRecord_)
            throw FormatError(current_.line, "the record begun here has no \"end\" line");
        return std::move(records_);
    }

  private:
    void Line(int number, const std::string& line) {
        if (number == 1)
            return Version(line);
        if (line.empty() || line[0] == '#')
            return;
        if (line.compare(0, 2, kBodyIndent) == 0) {
            if (target_ == nullptr)
                Fail("a body line outside a request or reply");
            UnescapeInto(line.substr(2), *target_);
            return;
        }
        target_ = nullptr;
        const std::string::size_type blank = line.find(' ');
        const std::string keyword = line.substr(0, blank);
        const std::string rest = blank == std::string::npos ? "" : line.substr(blank + 1);
        if (!inRecord_)
            return Begin(keyword, rest);
        if (keyword == "request") {
            if (hasRequest_)
                Fail("a second request in one record");
            hasRequest_ = true;
            Message(rest, current_.request);
        } else if (keyword == "reply" || keyword == "not-sent" || keyword == "no-reply") {
            SetOutcome(keyword, rest);
        } else if (keyword == "end") {
            End();
        } else if (keyword == "exchange") {
            throw FormatError(current_.line, "the record begun here has no \"end\" line");
        } else {
            Fail("unknown line \"" + Escape(keyword) + "\"");
        }
    }

    void Version(const std::string& line) {
        const std::string prefix = "qel-record ";
        if (line == kVersionLine)
            return;
        if (line.compare(0, prefix.size(), prefix) == 0) {
            Fail("recording format version \"" + Escape(line.substr(prefix.size())) +
                 "\" is not read by this build (it reads \"" + kVersionLine + "\")");
        }
        Fail(std::string("not a recording: the first line must be \"") + kVersionLine + "\"");
    }

    void Begin(const std::string& keyword, const std::string& rest) {
        current_ = Exchange();
        current_.line = lineNumber_;
        if (keyword != "exchange")
            Fail("expected \"exchange WHEN Nms\" to begin a record");
        if (!ParseExchangeLine(rest, current_))
            Fail("expected \"exchange WHEN Nms\" (a time and the milliseconds taken)");
        inRecord_ = true;
        hasRequest_ = hasOutcome_ = false;
    }

    void Message(const std::string& header, std::string& message) {
        UnescapeInto(header, message);
        target_ = &message;
    }

    void SetOutcome(const std::string& keyword, const std::string& rest) {
        if (!hasRequest_)
            Fail("\"" + keyword + "\" before the record's request");
        if (hasOutcome_)
            Fail("a second outcome in one record");
        hasOutcome_ = true;
        if (keyword == "reply") {
            current_.outcome = Outcome::kReplied;
            Message(rest, current_.reply);
        } else {
            current_.outcome = keyword == "not-sent" ? Outcome::kNotSent : Outcome::kNoReply;
            UnescapeInto(rest, current_.reason);
        }
    }

    void End() {
        MessageParts parts;
        if (!hasRequest_ || !hasOutcome_)
            Fail("the record ends without a request and its reply, not-sent or no-reply");
        if (!SplitMessage(current_.request, parts))
            Fail("the record's request has no header naming a class and a method");
        records_.push_back(std::move(current_));
        inRecord_ = false;
    }

    void UnescapeInto(const std::string& text, std::string& bytes) {
        if (!Unescape(text, bytes))
            Fail("a broken escape (use \\\\, \\n, \\r, \\t or \\xHH)");
    }

    [[noreturn]] void Fail(const std::string& what) { throw FormatError(lineNumber_, what); }

    int lineNumber_ = 0;
    bool inRecord_ = false;
    bool hasRequest_ = false;
    bool hasOutcome_ = false;
    Exchange current_;
    std::string* target_ = nullptr;  // the message that body lines extend
    std::vector<Exchange> records_;
};

}  // namespace

bool SplitMessage(const std::string& message, MessageParts& parts) {
    const std::size_t header = HeaderLength(message);
    if (header == 0)
        return false;
    const std::string names = message.substr(message_format::kLeadingFieldsLength,
                                             header - message_format::kHeaderFixedLength + 1);
    const std::string::size_type slash = names.find(message_format::kClassMethodSeparator);
    if (slash == std::string::npos)
        return false;
    parts.className = names.substr(0, slash);
    parts.method = names.substr(slash + 1);
    parts.body = message.substr(header);
    return true;
}

std::string MaskBody(const std::string& body) {
    return ReplaceSecrets(body, kMask);
}

bool HoldsSecret(const std::string& body) {
    return ReplaceSecrets(body, "") != body;
}

std::string MaskMessage(const std::string& message) {
    const std::size_t header = HeaderLength(message);
    if (header == 0)
        return MaskBody(message);
    const std::string body = message.substr(header);
    const std::string masked = MaskBody(body);
    std::string head = message.substr(0, header);
    const std::string lengthField = head.substr(header - kField);
    char field[kField + 8];
    if (masked != body && AllDigits(lengthField) &&
        std::strtoul(lengthField.c_str(), nullptr, 10) == body.size() &&
        std::snprintf(field, sizeof field, message_format::kBodyLengthFormat, masked.size()) ==
            static_cast<int>(kField)) {
        head.replace(header - kField, kField, field);
    }
    return head + masked;
}

std::string Escape(const std::string& bytes) {
    std::string text;
    text.reserve(bytes.size());
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const unsigned char c = static_cast<unsigned char>(bytes[i]);
        if (c == '\\') {
            text += "\\\\";
        } else if (c == '\n') {
            text += "\\n";
        } else if (c == '\r') {
            text += "\\r";
        } else if (c == '\t') {
            text += "\\t";
        } else if (c < 0x20 || c == 0x7f || (c == ' ' && i + 1 == bytes.size())) {
            char hex[5];
            std::snprintf(hex, sizeof hex, "\\x%02x", c);
            text += hex;
        } else {
            text += static_cast<char>(c);
        }
    }
    return text;
}

std::string FormatExchange(const Exchange& exchange) {
    std::string out = "exchange " + (exchange.when.empty() ? std::string("-") : exchange.when) +
                      " " + std::to_string(exchange.milliseconds) + "ms\n";
    AppendMessage(out, "request", exchange.request);
    if (exchange.outcome == Outcome::kReplied) {
        AppendMessage(out, "reply", exchange.reply);
    } else {
        out += exchange.outcome == Outcome::kNotSent ? "not-sent" : "no-reply";
        out += exchange.reason.empty() ? "" : " " + Escape(exchange.reason);
        out += "\n";
    }
    return out + "end\n";
}

FormatError::FormatError(int line, const std::string& what)
    : std::runtime_error(what), line_(line) {}

std::vector<Exchange> ParseRecording(const std::string& text) {
    return Parser().Parse(text);
}

std::vector<Exchange> ReadRecordingFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in)
        throw std::runtime_error(path + ": " + std::strerror(errno));
    std::ostringstream text;
    text << in.rdbuf();
    try {
        return ParseRecording(text.str());
    } catch (const FormatError& e) {
        throw std::runtime_error(path + ":" + std::to_string(e.line()) + ": " + e.what());
    }
}

}  // namespace recording
}  // namespace qel
