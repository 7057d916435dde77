#include "output.h"

#include <locale.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <cwchar>

#include "CResultCode.h"
#include "common/protocol.h"
#include "somctl.h"

namespace somctl {
namespace {

const char kEllipsis[] = "\xe2\x80\xa6";  // "…", one column

// Decodes the UTF-8 sequence at text[i]; returns its length in bytes (1 for
// a byte that starts no valid sequence) and its code point, or -1.
std::size_t DecodeAt(const std::string& text, std::size_t i, long& codePoint) {
    const unsigned char lead = static_cast<unsigned char>(text[i]);
    const std::size_t length = lead < 0x80 ? 1 : lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2;
    codePoint = -1;
    if (lead < 0x80) {
        codePoint = lead;
        return 1;
    }
    if (lead < 0xc2 || lead > 0xf4 || i + length > text.size())
        return 1;
    long value = lead & (0x3f >> (length - 1));
    for (std::size_t k = 1; k < length; ++k) {
        const unsigned char next = static_cast<unsigned char>(text[i + k]);
        if ((next & 0xc0) != 0x80)
            return 1;
        value = (value << 6) | (next & 0x3f);
    }
    static const long kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    if (value < kSmallest[length] || value > 0x10ffff || (value >= 0xd800 && value <= 0xdfff))
        return 1;
    codePoint = value;
    return length;
}

// wcwidth under a UTF-8 locale, whatever the process's locale is.
int CharacterWidth(long codePoint) {
    static const locale_t utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", static_cast<locale_t>(0));
    if (codePoint < 0)
        return 1;
    if (codePoint < 0x80)
        return 1;
    if (utf8 == static_cast<locale_t>(0))
        return 1;
    const locale_t previous = uselocale(utf8);
    const int width = wcwidth(static_cast<wchar_t>(codePoint));
    uselocale(previous);
    return width < 0 ? 1 : width;
}

bool IsControl(long codePoint) {
    return (codePoint >= 0 && codePoint < 0x20) || codePoint == 0x7f ||
           (codePoint >= 0x80 && codePoint < 0xa0);
}

// The cell as shown: control characters as '?', cut to `width` columns with
// an ellipsis when longer.
std::string Shown(const std::string& text, std::size_t width) {
    const bool cut = DisplayWidth(text) > width;
    const std::size_t room = cut ? width - std::min<std::size_t>(width, 1) : width;
    std::string shown;
    std::size_t used = 0;
    long codePoint = 0;
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t length = DecodeAt(text, i, codePoint);
        const std::size_t columns = IsControl(codePoint) ? 1 : CharacterWidth(codePoint);
        if (used + columns > room)
            break;
        shown += IsControl(codePoint) ? std::string("?") : text.substr(i, length);
        used += columns;
        i += length;
    }
    if (cut && width > 0)
        shown += kEllipsis;
    return shown;
}

std::string Hex(uint32_t code) {
    char hex[16];
    std::snprintf(hex, sizeof hex, "0x%08x", code);
    return hex;
}

}  // namespace

std::size_t DisplayWidth(const std::string& text) {
    std::size_t width = 0;
    long codePoint = 0;
    for (std::size_t i = 0; i < text.size();) {
        i += DecodeAt(text, i, codePoint);
        width += IsControl(codePoint) ? 1 : CharacterWidth(codePoint);
    }
    return width;
}

std::size_t TerminalWidth() {
    winsize size{};
    if (!isatty(STDOUT_FILENO) || ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0)
        return 0;
    return size.ws_col;
}

std::vector<std::size_t> Table::ColumnWidths(std::size_t maxWidth) const {
    std::vector<std::size_t> widths(headers_.size(), 0);
    for (std::size_t c = 0; c < headers_.size(); ++c)
        widths[c] = DisplayWidth(headers_[c]);
    for (const auto& row : rows_) {
        for (std::size_t c = 0; c < row.size() && c < widths.size(); ++c)
            widths[c] = std::max(widths[c], DisplayWidth(row[c]));
    }
    if (maxWidth == 0 || widths.empty())
        return widths;
    // Narrow the widest column, one column at a time, down to a floor that
    // still shows a few characters of every cell.
    const std::size_t kNarrowest = 4;
    std::size_t total = 2 * (widths.size() - 1);
    for (std::size_t w : widths)
        total += w;
    while (total > maxWidth) {
        auto widest = std::max_element(widths.begin(), widths.end());
        if (*widest <= kNarrowest)
            break;
        --*widest;
        --total;
    }
    return widths;
}

void Table::Print(std::ostream& out, std::size_t maxWidth) const {
    const std::vector<std::size_t> widths = ColumnWidths(maxWidth);
    auto line = [&](const std::vector<std::string>& cells) {
        std::string text;
        for (std::size_t c = 0; c < widths.size(); ++c) {
            const std::string cell = Shown(c < cells.size() ? cells[c] : "", widths[c]);
            text += cell;
            if (c + 1 < widths.size())
                text += std::string(widths[c] - DisplayWidth(cell) + 2, ' ');
        }
        while (!text.empty() && text.back() == ' ')
            text.pop_back();
        out << text << "\n";
    };
    line(headers_);
    for (const auto& row : rows_)
        line(row);
}

void Output::Print(const Table& table, const char* empty) {
    if (table.empty()) {
        out_ << empty << "\n";
        return;
    }
    table.Print(out_, width_);
}

void Output::Fields(const nlohmann::json& doc) {
    Table table({"SETTING", "VALUE"});
    for (const auto& item : doc.items()) {
        table.Row({item.key(), item.value().is_string() ? item.value().get<std::string>()
                                                        : item.value().dump()});
    }
    Print(table);
}

void Output::Message(const std::string& text) {
    if (json_) {
        Json({{"ok", true}, {"message", text}});
    } else {
        out_ << text << "\n";
    }
}

std::string Output::TransportReason(uint32_t code) const {
    if (transport_ == nullptr)
        return CResultCode::Describe(code);
    const std::string path = transport_->SocketPath();
    const int error = transport_->LastErrno();
    switch (transport_->LastFailedStage()) {
        case CFileTransfer::Stage::kConfiguration:
            return std::string("cannot read the socket configuration ") +
                   qel::protocol::kSocketConfig +
                   (error == 0 ? ": no socket= line" : std::string(": ") + std::strerror(error));
        case CFileTransfer::Stage::kConnect:
            if (error == EACCES || error == EPERM)
                return "permission denied on " + path;
            if (error == ENOENT || error == ECONNREFUSED)
                return "the SOM service is not running (" + path + ": " + std::strerror(error) +
                       ")";
            if (error == ETIMEDOUT)
                return "the SOM service at " + path + " did not accept the connection within " +
                       std::to_string(transport_->TimeoutSeconds()) + " s";
            return "cannot connect to " + path + ": " + std::strerror(error);
        case CFileTransfer::Stage::kSend:
            return "sending to the SOM service at " + path + " failed: " + std::strerror(error);
        case CFileTransfer::Stage::kReceive:
            if (error == ETIMEDOUT)
                return "the SOM service at " + path + " did not answer within the time-out of " +
                       std::to_string(transport_->TimeoutSeconds()) + " s (timeout= in " +
                       qel::protocol::kSocketConfig + ")";
            return "the SOM service at " + path + " closed the connection without a whole reply";
        case CFileTransfer::Stage::kNone:
            break;
    }
    return CResultCode::Describe(code);
}

bool Output::Reached() const {
    return transport_ != nullptr && transport_->LastFailedStage() == CFileTransfer::Stage::kNone;
}

int Output::Result(const std::string& operation, HRESULT rc) {
    const uint32_t code = static_cast<uint32_t>(rc);
    if (code == CResultCode::kOk)
        return kOk;
    if (transport_ != nullptr && !Reached()) {
        const bool sent = transport_->LastFailedStage() == CFileTransfer::Stage::kReceive;
        return Fail(operation, code, TransportReason(code), sent ? kNoReply : kUnreachable);
    }
    // A transport code after a whole exchange: the library folds some answers
    // of the service into it (a negative result, a header too long to send).
    if (code == CResultCode::kNotSent && transport_ != nullptr)
        return Fail(operation, code, "not sent: the class and method names are too long", kUsage);
    if (code == CResultCode::kNoReply && transport_ != nullptr)
        return Fail(operation, code, "the service answered with an error", kServiceError);
    if (code == CResultCode::kNotSent)
        return Fail(operation, code, CResultCode::Describe(code), kUnreachable);
    if (code == CResultCode::kNoReply)
        return Fail(operation, code, CResultCode::Describe(code), kNoReply);
    return Fail(operation, code, CResultCode::Describe(code), kServiceError);
}

int Output::Fail(const std::string& operation, uint32_t code, const std::string& message,
                 int exitCode) {
    if (json_) {
        Json({{"ok", false}, {"operation", operation}, {"code", Hex(code)}, {"error", message}});
    } else {
        err_ << "somctl: " << operation << " failed: " << message << " (" << Hex(code) << ")\n";
    }
    return exitCode;
}

int Output::Usage(const std::string& text) {
    if (json_) {
        Json({{"ok", false}, {"error", text}});
    } else {
        err_ << "somctl: " << text << "\nTry 'somctl --help'.\n";
    }
    return kUsage;
}

std::string Masked(const std::string& secret) {
    return secret.empty() ? "" : "********";
}

}  // namespace somctl
