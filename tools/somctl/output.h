// Output of somctl: aligned tables for people, JSON for scripts, and the
// mapping of result codes to messages and exit codes.
#ifndef QEL_TOOLS_SOMCTL_OUTPUT_H
#define QEL_TOOLS_SOMCTL_OUTPUT_H

#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "QelTypes.h"

namespace somctl {

class Table {
  public:
    explicit Table(std::vector<std::string> headers) : headers_(std::move(headers)) {}
    void Row(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }
    bool empty() const { return rows_.empty(); }
    void Print(std::ostream& out) const;

  private:
    std::vector<std::string> headers_;
    std::vector<std::vector<std::string>> rows_;
};

// Where a command's result goes.
class Output {
  public:
    Output(std::ostream& out, std::ostream& err, bool json) : out_(out), err_(err), json_(json) {}
    bool json() const { return json_; }
    std::ostream& out() { return out_; }
    // Prints a JSON document (only in JSON mode) or a table.
    // Bytes that are not UTF-8 are shown as U+FFFD rather than stopping the dump.
    void Json(const nlohmann::json& document) {
        out_ << document.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << "\n";
    }
    void Print(const Table& table, const char* empty = "nothing to show");
    void Message(const std::string& text);
    // Reports a failed call and returns its exit code; 0 for success.
    int Result(const std::string& operation, HRESULT rc);
    int Usage(const std::string& text);
    // Reports a failure with its code and message; returns exitCode.
    int Fail(const std::string& operation, uint32_t code, const std::string& message, int exitCode);

  private:
    std::ostream& out_;
    std::ostream& err_;
    bool json_;
};

// Why a call returned "not sent", found by connecting to the socket again.
std::string UnreachableReason();

// A secret shown as stars (empty stays empty).
std::string Masked(const std::string& secret);

}  // namespace somctl

#endif  // QEL_TOOLS_SOMCTL_OUTPUT_H
