#include "output.h"

#include <algorithm>
#include <cstdio>

#include "common/service_codes.h"
#include "somctl.h"

namespace somctl {

void Table::Print(std::ostream& out) const {
    std::vector<std::size_t> widths(headers_.size(), 0);
    for (std::size_t c = 0; c < headers_.size(); ++c)
        widths[c] = headers_[c].size();
    for (const auto& row : rows_) {
        for (std::size_t c = 0; c < row.size() && c < widths.size(); ++c) {
            widths[c] = std::max(widths[c], row[c].size());
        }
    }
    auto line = [&](const std::vector<std::string>& cells) {
        std::string text;
        for (std::size_t c = 0; c < widths.size(); ++c) {
            const std::string cell = c < cells.size() ? cells[c] : "";
            text += cell;
            if (c + 1 < widths.size())
                text += std::string(widths[c] - cell.size() + 2, ' ');
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
    table.Print(out_);
}

void Output::Message(const std::string& text) {
    if (json_) {
        Json({{"ok", true}, {"message", text}});
    } else {
        out_ << text << "\n";
    }
}

int Output::Result(const std::string& operation, HRESULT rc) {
    const uint32_t code = static_cast<uint32_t>(rc);
    if (code == 0)
        return kOk;
    int exitCode = kServiceError;
    std::string message;
    if (code == 0x80081001u) {
        exitCode = kUnreachable;
        message = "the SOM service is not reachable (is somd running? see socket.conf)";
    } else if (code == 0x80081101u) {
        exitCode = kNoReply;
        message = "the SOM service did not answer";
    } else {
        message = somd::DescribeServiceCode(code);
    }
    char hex[16];
    std::snprintf(hex, sizeof hex, "0x%08x", code);
    if (json_) {
        Json({{"ok", false}, {"operation", operation}, {"code", hex}, {"error", message}});
    } else {
        err_ << "somctl: " << operation << " failed: " << message << " (" << hex << ")\n";
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
