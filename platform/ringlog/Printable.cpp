#include "platform/ringlog/Printable.h"

namespace Ringlog {

void appendPrintable(std::string& out, std::string_view text) {
    constexpr std::string_view digits = "0123456789abcdef";
    for (char c : text) {
        if (c >= ' ' && c <= '~') {
            out += c;
            continue;
        }
        auto byte = static_cast<unsigned char>(c);
        out += "\\x";
        out += digits[byte >> 4U];
        out += digits[byte & 15U];
    }
}

} // namespace Ringlog
