// somd --replay FILE: serves the replies of a recording instead of the
// scenario's service, for reproducing what another machine's service
// answered (docs/recording.md).
#ifndef QEL_TOOLS_SOMD_REPLAY_H
#define QEL_TOOLS_SOMD_REPLAY_H

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "CResultCode.h"
#include "recording.h"

namespace somd {

// The answer to a request that no record matches; the log names the nearest
// recorded request.
constexpr uint32_t kNotRecorded = CResultCode::kNotRecorded;

class Replay {
  public:
    // Reads the whole recording first; throws std::runtime_error
    // "FILE:LINE: what" for a damaged one, so nothing is served from it.
    explicit Replay(const std::string& path);

    // Serves one connection: reads the request, then sends the recorded
    // reply byte for byte, or replays a recorded failure (waits as long as
    // it took, then closes without a reply), or answers kNotRecorded.
    void Serve(int fd, const std::function<void()>& requestRead);

    // The record that answers a request (class, method and body; masked
    // values match any value): repeated identical requests get the matching
    // records in the order of recording, the last one again after that.
    // Null when none matches.
    const qel::recording::Exchange* Answer(const std::string& className, const std::string& method,
                                           const std::string& body);
    // "line N: CLASS/METHOD" of the recorded request closest to this one.
    std::string Nearest(const std::string& className, const std::string& method,
                        const std::string& body) const;

  private:
    std::vector<qel::recording::Exchange> exchanges_;
    std::vector<qel::recording::MessageParts> requests_;  // masked, per exchange
    std::map<std::string, std::vector<std::size_t>> byRequest_;
    std::map<std::string, std::size_t> served_;  // how many of each key were served
    std::mutex lock_;
};

}  // namespace somd

#endif  // QEL_TOOLS_SOMD_REPLAY_H
