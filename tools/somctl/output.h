// Output of somctl: tables for people, JSON for scripts, and the mapping of
// result codes to messages and exit codes.
#ifndef QEL_TOOLS_SOMCTL_OUTPUT_H
#define QEL_TOOLS_SOMCTL_OUTPUT_H

#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "CFileTransfer.h"
#include "QelTypes.h"

namespace somctl {

// The columns that `text` takes on a terminal: UTF-8 decoded, each character
// counted by wcwidth (East Asian wide characters take two, combining marks
// none); a byte that is not UTF-8 counts as one.
std::size_t DisplayWidth(const std::string& text);

// Columns aligned by display width. Given a width, the widest columns are
// narrowed until the table fits and their cells end in "…"; control bytes
// are shown as '?', so a cell never moves the cursor.
class Table {
  public:
    explicit Table(std::vector<std::string> headers) : headers_(std::move(headers)) {}
    void Row(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }
    bool empty() const { return rows_.empty(); }
    // maxWidth 0: no limit.
    void Print(std::ostream& out, std::size_t maxWidth = 0) const;

  private:
    std::vector<std::size_t> ColumnWidths(std::size_t maxWidth) const;
    std::vector<std::string> headers_;
    std::vector<std::vector<std::string>> rows_;
};

// The width of the terminal on standard output, or 0 when it is not one.
std::size_t TerminalWidth();

// Where a command's result goes.
class Output {
  public:
    Output(std::ostream& out, std::ostream& err, bool json, std::size_t width = 0)
        : out_(out), err_(err), json_(json), width_(width) {}
    bool json() const { return json_; }
    std::ostream& out() { return out_; }
    // The transport whose last failure Result() explains.
    void SetTransport(const CFileTransfer* transport) { transport_ = transport; }
    // Prints a JSON document. Bytes that are not UTF-8 are shown as U+FFFD
    // rather than stopping the dump.
    void Json(const nlohmann::json& document) {
        out_ << document.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << "\n";
    }
    void Print(const Table& table, const char* empty = "nothing to show");
    void Message(const std::string& text);
    // The members of a JSON object as a SETTING/VALUE table.
    void Fields(const nlohmann::json& doc);
    // Reports a failed call and returns its exit code; 0 for success.
    int Result(const std::string& operation, HRESULT rc);
    // Whether the last call reached the service and got its whole reply.
    bool Reached() const;
    // Why the last call did not reach the service or got no reply.
    std::string TransportReason(uint32_t code) const;
    int Usage(const std::string& text);
    // Reports a failure with its code and message; returns exitCode.
    int Fail(const std::string& operation, uint32_t code, const std::string& message, int exitCode);

  private:
    std::ostream& out_;
    std::ostream& err_;
    bool json_;
    std::size_t width_;
    const CFileTransfer* transport_ = nullptr;
};

// A secret shown as stars (empty stays empty).
std::string Masked(const std::string& secret);

}  // namespace somctl

#endif  // QEL_TOOLS_SOMCTL_OUTPUT_H
