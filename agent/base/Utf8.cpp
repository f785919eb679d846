#include "agent/base/Utf8.h"

#include <array>
#include <cstddef>

namespace Agent {

namespace {

/// Bytes that follow the lead byte, or -1 if `lead` cannot lead.
int followers(unsigned char lead) {
    if (lead < 0x80) {
        return 0;
    }
    if (lead >= 0xc2 && lead <= 0xdf) {
        return 1;
    }
    if (lead >= 0xe0 && lead <= 0xef) {
        return 2;
    }
    return lead >= 0xf0 && lead <= 0xf4 ? 3 : -1;
}

/// The second byte rules out overlong forms, surrogates and values past 0x10ffff.
bool secondFits(unsigned char lead, unsigned char second) {
    switch (lead) {
    case 0xe0:
        return second >= 0xa0;
    case 0xed:
        return second < 0xa0;
    case 0xf0:
        return second >= 0x90;
    case 0xf4:
        return second < 0x90;
    default:
        return true;
    }
}

} // namespace

bool isUtf8(std::string_view text) {
    auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    for (std::size_t i = 0; i < text.size();) {
        int rest = followers(byteAt(i));
        std::size_t end = i + 1 + static_cast<std::size_t>(rest);
        if (rest < 0 || end > text.size() || (rest > 0 && !secondFits(byteAt(i), byteAt(i + 1)))) {
            return false;
        }
        for (++i; i < end; ++i) {
            if ((byteAt(i) & 0xc0) != 0x80) {
                return false;
            }
        }
    }
    return true;
}

std::string documentName(std::string_view text) {
    if (isUtf8(text) && text.find("\\x") == std::string_view::npos) {
        return std::string(text);
    }
    static constexpr std::array digits{'0', '1', '2', '3', '4', '5', '6', '7',
                                       '8', '9', 'a', 'b', 'c', 'd', 'e', 'f'};
    std::string name;
    for (char c : text) {
        auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80 && c != '\\') {
            name += c;
        } else {
            name += "\\x";
            name += digits[byte >> 4];
            name += digits[byte & 0x0f];
        }
    }
    return name;
}

} // namespace Agent
