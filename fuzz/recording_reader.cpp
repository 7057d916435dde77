// libFuzzer target for the recording reader: any text is read or refused
// with a line number, and whatever is read writes back to the same bytes.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "recording.h"

namespace rec = qel::recording;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::vector<rec::Exchange> read;
    try {
        read = rec::ParseRecording(text);
    } catch (const rec::FormatError& e) {
        if (e.line() < 1)
            std::abort();
        return 0;
    }
    std::string written = rec::kVersionLine + std::string("\n");
    for (const rec::Exchange& exchange : read) {
        written += rec::FormatExchange(exchange);
        // Masking twice changes nothing more than masking once.
        const std::string masked = rec::MaskMessage(exchange.request);
        if (rec::MaskMessage(masked) != masked)
            std::abort();
    }
    const std::vector<rec::Exchange> again = rec::ParseRecording(written);
    if (again.size() != read.size())
        std::abort();
    for (std::size_t i = 0; i < read.size(); ++i) {
        if (again[i].request != read[i].request || again[i].reply != read[i].reply ||
            again[i].outcome != read[i].outcome || again[i].milliseconds != read[i].milliseconds)
            std::abort();
    }
    return 0;
}
