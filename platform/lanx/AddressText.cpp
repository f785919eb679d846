#include "platform/lanx/AddressText.h"

#include <arpa/inet.h>

#include <algorithm>
#include <charconv>
#include <cstring>

#include "platform/orb/value/Error.h"

namespace Lanx {

namespace {

constexpr std::size_t groupCount = 8;

struct ZeroRun {
    std::size_t begin = groupCount;
    std::size_t length = 0;
};

[[noreturn]] void refuse(const char* what, std::string_view text) {
    throw Orb::ParseError("not " + std::string(what) + ": \"" + std::string(text) + "\"");
}

/// Takes a number of one to three digits without leading zeros from the head of `text`.
bool takeNumber(std::string_view& text, unsigned& number) {
    number = 0;
    std::size_t digits = 0;
    while (digits < text.size() && digits < 3 && text[digits] >= '0' && text[digits] <= '9') {
        number = number * 10 + static_cast<unsigned>(text[digits] - '0');
        ++digits;
    }
    if (digits == 0 || (digits > 1 && text.front() == '0')) {
        return false;
    }
    text.remove_prefix(digits);
    return true;
}

void appendNumber(std::string& out, std::uint32_t number, int base) {
    char digits[12];
    out.append(digits, std::to_chars(digits, digits + sizeof digits, number, base).ptr);
}

std::uint32_t group(const AddressBytes& bytes, std::size_t index) {
    return static_cast<std::uint32_t>(bytes[2 * index] << 8 | bytes[2 * index + 1]);
}

ZeroRun longestZeroRun(const AddressBytes& bytes) {
    ZeroRun longest;
    for (std::size_t begin = 0; begin < groupCount; ++begin) {
        std::size_t end = begin;
        while (end < groupCount && group(bytes, end) == 0) {
            ++end;
        }
        if (end - begin > std::max<std::size_t>(longest.length, 1)) {
            longest = {begin, end - begin};
        }
        begin = std::max(begin, end);
    }
    return longest;
}

bool isMappedIp(const AddressBytes& bytes) {
    static constexpr std::uint8_t head[12] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff};
    return std::equal(std::begin(head), std::end(head), bytes.begin());
}

} // namespace

void appendIpText(std::string& out, std::uint32_t address) {
    for (int shift = 24; shift >= 0; shift -= 8) {
        appendNumber(out, address >> shift & 0xff, 10);
        if (shift > 0) {
            out += '.';
        }
    }
}

std::uint32_t parseIpText(std::string_view text) {
    std::string_view rest = text;
    std::uint32_t address = 0;
    for (int index = 0; index < 4; ++index) {
        if (index > 0) {
            if (!rest.starts_with('.')) {
                refuse("an IPv4 address", text);
            }
            rest.remove_prefix(1);
        }
        unsigned number = 0;
        if (!takeNumber(rest, number) || number > 255) {
            refuse("an IPv4 address", text);
        }
        address = address << 8 | number;
    }
    if (!rest.empty()) {
        refuse("an IPv4 address", text);
    }
    return address;
}

void appendIp6Text(std::string& out, const AddressBytes& bytes) {
    if (isMappedIp(bytes)) {
        out += "::ffff:";
        appendIpText(out, group(bytes, 6) << 16 | group(bytes, 7));
        return;
    }
    const ZeroRun run = longestZeroRun(bytes);
    for (std::size_t index = 0; index < groupCount; ++index) {
        if (index == run.begin) {
            out += "::";
            index += run.length - 1;
            continue;
        }
        if (index > 0 && index != run.begin + run.length) {
            out += ':';
        }
        appendNumber(out, group(bytes, index), 16);
    }
}

AddressBytes parseIp6Text(std::string_view text) {
    char terminated[INET6_ADDRSTRLEN];
    AddressBytes bytes;
    if (text.size() >= sizeof terminated || text.find('\0') != std::string_view::npos) {
        refuse("an IPv6 address", text);
    }
    *std::copy(text.begin(), text.end(), terminated) = '\0';
    if (inet_pton(AF_INET6, terminated, bytes.data()) != 1) {
        refuse("an IPv6 address", text);
    }
    return bytes;
}

void appendLength(std::string& out, unsigned len) {
    out += '/';
    appendNumber(out, len, 10);
}

std::pair<std::string_view, unsigned> splitLength(std::string_view text) {
    const std::size_t slash = text.rfind('/');
    if (slash == std::string_view::npos) {
        refuse("an address with length", text);
    }
    std::string_view digits = text.substr(slash + 1);
    unsigned len = 0;
    if (!takeNumber(digits, len) || !digits.empty()) {
        refuse("an address with length", text);
    }
    return {text.substr(0, slash), len};
}

} // namespace Lanx
