#include "output.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "CFileTransfer.h"
#include "CResultCode.h"
#include "somctl.h"
#include "somif/wire.h"

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

std::string UnreachableReason() {
    std::string path;
    int timeout = 0;
    if (!CFileTransfer::ReadConfiguration(qel::wire::kSocketConfig, path, timeout))
        return std::string("no socket line in ") + qel::wire::kSocketConfig;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        return "the socket path " + path + " is too long";
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    // Connecting again tells why the call failed; the library only says that it did.
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int rc = fd < 0 ? -1 : connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address);
    const int error = errno;
    if (fd >= 0)
        close(fd);
    if (rc == 0)
        return "the SOM service at " + path + " accepted a connection but the call failed";
    if (error == EACCES || error == EPERM)
        return "permission denied on " + path;
    if (error == ENOENT || error == ECONNREFUSED)
        return "the SOM service is not running (" + path + ": " + std::strerror(error) + ")";
    return "cannot connect to " + path + ": " + std::strerror(error);
}

std::string NoReplyReason() {
    std::string path;
    int timeout = CFileTransfer::kDefaultTimeoutSeconds;
    CFileTransfer::ReadConfiguration(qel::wire::kSocketConfig, path, timeout);
    return "the SOM service at " + path + " did not answer within the time-out of " +
           std::to_string(timeout) + " s (timeout= in " + qel::wire::kSocketConfig + ")";
}

int Output::Result(const std::string& operation, HRESULT rc) {
    const uint32_t code = static_cast<uint32_t>(rc);
    if (code == CResultCode::kOk)
        return kOk;
    int exitCode = kServiceError;
    std::string message;
    if (code == CResultCode::kNotSent) {
        exitCode = kUnreachable;
        message = UnreachableReason();
    } else if (code == CResultCode::kNoReply) {
        exitCode = kNoReply;
        message = NoReplyReason();
    } else {
        message = CResultCode::Describe(code);
    }
    return Fail(operation, code, message, exitCode);
}

int Output::Fail(const std::string& operation, uint32_t code, const std::string& message,
                 int exitCode) {
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
