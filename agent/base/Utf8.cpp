#include "agent/base/Utf8.h"

#include <algorithm>
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

/// The length of the character that `text` begins with; 0 if there is none.
std::size_t characterLength(std::string_view text) {
    const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const int rest = text.empty() ? -1 : followers(byteAt(0));
    const std::size_t length = 1 + static_cast<std::size_t>(rest);
    if (rest < 0 || length > text.size() || (rest > 0 && !secondFits(byteAt(0), byteAt(1)))) {
        return 0;
    }
    for (std::size_t i = 1; i < length; ++i) {
        if ((byteAt(i) & 0xc0) != 0x80) {
            return 0;
        }
    }
    return length;
}

} // namespace

bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = characterLength(text);
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

std::string withReplacements(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const std::size_t length = characterLength(text);
        result += length > 0 ? text.substr(0, length) : "\xef\xbf\xbd";
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return result;
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
