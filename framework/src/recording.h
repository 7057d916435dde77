// Recordings of SOM exchanges: the text format that the library writes when
// QEL_RECORD names a file, and its reader, shared by somd --replay and
// somctl replay-check. docs/recording.md describes the format.
#ifndef QEL_FRAMEWORK_SRC_RECORDING_H
#define QEL_FRAMEWORK_SRC_RECORDING_H

#include <stdexcept>
#include <string>
#include <vector>

namespace qel {
namespace recording {

// The first line of every recording; the number is the format's version.
constexpr char kVersionLine[] = "qel-record 1";
// What replaces a password's value; a masked value matches any value.
constexpr char kMask[] = "********";

enum class Outcome { kReplied, kNotSent, kNoReply };

struct Exchange {
    int line = 0;                // where the record begins in its file
    std::string when;            // UTC time of the send, for people
    long long milliseconds = 0;  // from the send to the reply or the failure
    Outcome outcome = Outcome::kReplied;
    std::string reason;   // why it failed, for people
    std::string request;  // the whole request, header and body
    std::string reply;    // the whole reply (kReplied only)
};

struct MessageParts {
    std::string className;
    std::string method;
    std::string body;
};

// Splits a message by the header length in its first 8 characters; false
// when it holds no whole header naming a class and a method.
bool SplitMessage(const std::string& message, MessageParts& parts);

// The body with the value of every ProxyPassword and CacheServerPassword
// item (any class, any element path) replaced by kMask.
std::string MaskBody(const std::string& body);
// True when the body holds a password with a value (masked or not).
bool HoldsSecret(const std::string& body);
// The message with its body masked and its body-length field following the
// masked body. Without a readable header all of it is taken as body.
std::string MaskMessage(const std::string& message);

// Bytes as they appear in a line: backslash, control bytes and a trailing
// blank escaped; everything else, UTF-8 included, as it is.
std::string Escape(const std::string& bytes);

// One record, ending with its "end" line.
std::string FormatExchange(const Exchange& exchange);

class FormatError : public std::runtime_error {
  public:
    FormatError(int line, const std::string& what);
    int line() const { return line_; }

  private:
    int line_;
};

// Reads a whole recording; throws FormatError at the first damaged line, so
// that a half record is never taken for a whole one.
std::vector<Exchange> ParseRecording(const std::string& text);
// The same for a file; std::runtime_error "PATH:LINE: what" or "PATH: why".
std::vector<Exchange> ReadRecordingFile(const std::string& path);

}  // namespace recording
}  // namespace qel

#endif  // QEL_FRAMEWORK_SRC_RECORDING_H
