#include "platform/orb/value/Text.h"

namespace Orb {

namespace {

constexpr std::string_view hexDigits = "0123456789abcdef";

bool isPrintable(char character) { return character >= ' ' && character <= '~'; }

unsigned readHexDigit(TextReader& in) {
    const std::string_view::size_type digit = hexDigits.find(in.take(1).front());
    if (digit == std::string_view::npos) {
        in.fail("hexadecimal digit");
    }
    return static_cast<unsigned>(digit);
}

char readEscaped(TextReader& in) {
    const char escaped = in.take(1).front();
    if (escaped == '\\' || escaped == '\'') {
        return escaped;
    }
    if (escaped != 'x') {
        in.fail("escape sequence");
    }
    const unsigned high = readHexDigit(in);
    return static_cast<char>(high << 4 | readHexDigit(in));
}

} // namespace

void TextForm<bool>::write(std::string& out, bool value) { out += value ? "True" : "False"; }

bool TextForm<bool>::read(TextReader& in) {
    if (in.tryLiteral("True")) {
        return true;
    }
    in.literal("False");
    return false;
}

void TextForm<double>::write(std::string& out, double value) {
    char digits[32];
    out.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

double TextForm<double>::read(TextReader& in) {
    const std::string_view rest = in.rest();
    double value = 0;
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), value);
    if (error == std::errc::result_out_of_range) {
        throw RangeError("number out of range");
    }
    if (error != std::errc()) {
        in.fail("number");
    }
    in.take(static_cast<std::size_t>(end - rest.data()));
    return value;
}

void TextForm<std::string>::write(std::string& out, std::string_view value) {
    out += '\'';
    for (const char character : value) {
        if (character == '\\' || character == '\'') {
            out += '\\';
            out += character;
        } else if (isPrintable(character)) {
            out += character;
        } else {
            const auto byte = static_cast<unsigned char>(character);
            out += "\\x";
            out += hexDigits[byte >> 4];
            out += hexDigits[byte & 15];
        }
    }
    out += '\'';
}

std::string TextForm<std::string>::read(TextReader& in) {
    std::string value;
    in.literal("'");
    while (!in.tryLiteral("'")) {
        const char character = in.take(1).front();
        if (!isPrintable(character)) {
            in.fail("printable character");
        }
        value += character == '\\' ? readEscaped(in) : character;
    }
    return value;
}

} // namespace Orb
