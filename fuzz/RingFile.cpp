#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "platform/orb/value/Error.h"
#include "platform/ringlog/RinglogReader.h"

/// Reads arbitrary bytes as a ring trace file. Whatever they are, only printable lines come out.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        Ringlog::RinglogReader reader({reinterpret_cast<const char*>(data), size});
        while (auto line = reader.next()) {
            for (char c : *line) {
                if (c < ' ' || c > '~') {
                    std::abort();
                }
            }
        }
    } catch (const Orb::ParseError&) {
        return 0;
    }
    return 0;
}
