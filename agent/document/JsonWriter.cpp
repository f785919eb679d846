#include "agent/document/JsonWriter.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "agent/base/Utf8.h"

namespace Agent {

namespace {

void appendEscaped(std::string& out, char c) {
    constexpr std::string_view special = "\"\\\b\f\n\r\t";
    constexpr std::string_view letters = "\"\\bfnrt";
    constexpr std::string_view digits = "0123456789abcdef";
    if (const std::size_t at = special.find(c); at != std::string_view::npos) {
        out += '\\';
        out += letters[at];
    } else if (const auto byte = static_cast<unsigned char>(c); byte < ' ') {
        out += "\\u00";
        out += digits[byte >> 4U];
        out += digits[byte & 15U];
    } else {
        out += c;
    }
}

/// What is no UTF-8 is replaced.
void appendString(std::string& out, std::string_view text) {
    const auto isPlain = [](char c) { return c >= ' ' && c <= '~' && c != '"' && c != '\\'; };
    out += '"';
    if (std::all_of(text.begin(), text.end(), isPlain)) {
        out += text;
    } else {
        for (const char c : isUtf8(text) ? std::string(text) : withReplacements(text)) {
            appendEscaped(out, c);
        }
    }
    out += '"';
}

} // namespace

void JsonWriter::key(std::string_view key) {
    separate();
    appendString(*out_, key);
    *out_ += ':';
    isFirst_ = true;
}

void JsonWriter::value(std::string_view text) {
    separate();
    appendString(*out_, text);
    isFirst_ = false;
}

void JsonWriter::seconds(double seconds) { plain(secondsText(seconds)); }

std::string secondsText(double seconds) {
    std::array<char, 400> digits; // enough for the largest number
    const auto [end, error] =
        std::to_chars(digits.data(), digits.data() + digits.size(), std::round(seconds * 1e6) / 1e6,
                      std::chars_format::fixed);
    const std::string_view text(digits.data(), static_cast<std::size_t>(end - digits.data()));
    return std::string(text) + (text.find('.') == std::string_view::npos ? ".0" : "");
}

} // namespace Agent
