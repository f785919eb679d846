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

void appendHex(std::string& out, unsigned char byte) {
    constexpr std::string_view digits = "0123456789abcdef";
    out += "\\x";
    out += digits[byte >> 4];
    out += digits[byte & 0x0f];
}

/// The number of the character that the text, which has its length, stands for.
char32_t codeOf(std::string_view character) {
    constexpr std::array<unsigned, 5> leadBits{0, 0x7f, 0x1f, 0x0f, 0x07};
    auto code = static_cast<char32_t>(static_cast<unsigned char>(character[0])
                                      & leadBits.at(character.size()));
    for (const char c : character.substr(1)) {
        code = code << 6 | (static_cast<unsigned char>(c) & 0x3fU);
    }
    return code;
}

struct Range {
    char32_t first;
    char32_t last;
};

template <std::size_t size>
bool isIn(char32_t code, const std::array<Range, size>& ranges) {
    return std::ranges::any_of(
        ranges, [&](const Range& range) { return range.first <= code && code <= range.last; });
}

/// Controls, ends of lines and paragraphs, and what sets the direction of text.
constexpr std::array<Range, 6> controls{{{0, 0x1f},
                                         {0x7f, 0x9f},
                                         {0x200b, 0x200f},
                                         {0x2028, 0x202e},
                                         {0x2060, 0x206f},
                                         {0xfeff, 0xfeff}}};
/// Characters that are put on the one before.
constexpr std::array<Range, 5> combining{
    {{0x300, 0x36f}, {0x483, 0x489}, {0x591, 0x5bd}, {0x20d0, 0x20ff}, {0xfe00, 0xfe2f}}};
/// Characters that take two columns.
constexpr std::array<Range, 11> wide{{{0x1100, 0x115f},
                                      {0x2e80, 0x303e},
                                      {0x3041, 0xa4cf},
                                      {0xac00, 0xd7a3},
                                      {0xf900, 0xfaff},
                                      {0xfe30, 0xfe6f},
                                      {0xff00, 0xff60},
                                      {0xffe0, 0xffe6},
                                      {0x1f300, 0x1f64f},
                                      {0x1f900, 0x1f9ff},
                                      {0x20000, 0x3fffd}}};

/// How many bytes at the head are ASCII that controls nothing: mostly all, in every line of output.
std::size_t plainLength(std::string_view text) {
    const auto* end = std::find_if(text.begin(), text.end(),
                                   [](unsigned char byte) { return byte < 0x20 || byte > 0x7e; });
    return static_cast<std::size_t>(end - text.begin());
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
    std::string name;
    for (char c : text) {
        auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80 && c != '\\') {
            name += c;
        } else {
            appendHex(name, byte);
        }
    }
    return name;
}

std::string printable(std::string_view text) {
    std::string result(text.substr(0, plainLength(text)));
    text.remove_prefix(result.size());
    while (!text.empty()) {
        const std::size_t length = characterLength(text);
        const std::string_view character = text.substr(0, std::max<std::size_t>(length, 1));
        if (length > 0 && !isIn(codeOf(character), controls)) {
            result += character;
        } else {
            for (const char c : character) {
                appendHex(result, static_cast<unsigned char>(c));
            }
        }
        text.remove_prefix(character.size());
    }
    return result;
}

std::size_t columnsOf(std::string_view text) {
    std::size_t columns = plainLength(text);
    text.remove_prefix(columns);
    while (!text.empty()) {
        const std::size_t length = std::max<std::size_t>(characterLength(text), 1);
        const char32_t code = codeOf(text.substr(0, length));
        columns += isIn(code, combining) ? 0 : isIn(code, wide) ? 2 : 1;
        text.remove_prefix(length);
    }
    return columns;
}

} // namespace Agent
