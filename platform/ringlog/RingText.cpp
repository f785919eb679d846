#include "platform/ringlog/RingText.h"

#include <arpa/inet.h>

#include <charconv>
#include <cstdint>

#include "platform/ringlog/ByteReader.h"
#include "platform/ringlog/Printable.h"
#include "platform/ringlog/RingAddress.h"

namespace Ringlog {
namespace {

enum class Result { done, ended, bad };

template <typename T>
Result appendNumber(std::string& out, ByteReader& arguments) {
    auto value = arguments.take<T>();
    if (!value) {
        return Result::ended;
    }
    std::array<char, 32> digits{};
    auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), *value);
    out.append(digits.data(), end);
    return Result::done;
}

Result appendBool(std::string& out, ByteReader& arguments) {
    auto value = arguments.take<std::uint8_t>();
    if (!value) {
        return Result::ended;
    }
    out += *value != 0 ? "true" : "false";
    return *value <= 1 ? Result::done : Result::bad;
}

Result appendString(std::string& out, ByteReader& arguments) {
    auto size = arguments.take<std::uint16_t>();
    if (!size) {
        return Result::ended;
    }
    auto text = arguments.takeBytes(*size);
    if (!text) {
        return Result::bad;
    }
    appendPrintable(out, *text);
    return Result::done;
}

Result appendAddress(std::string& out, ByteReader& arguments) {
    auto address = arguments.take<RingAddress>();
    if (!address) {
        return Result::ended;
    }
    if (address->family == 0) {
        out += "unset";
        return Result::done;
    }
    bool ipv4 = address->family == 4;
    bool masked = address->length != RingAddress::noMask;
    if ((!ipv4 && address->family != 6) || (masked && address->length > (ipv4 ? 32 : 128))) {
        return Result::bad;
    }
    std::array<char, INET6_ADDRSTRLEN> text{};
    ::inet_ntop(ipv4 ? AF_INET : AF_INET6, address->bytes.data(), text.data(), text.size());
    out += text.data();
    if (masked) {
        out += '/';
        out += std::to_string(address->length);
    }
    return Result::done;
}

Result appendArgument(std::string& out, char letter, ByteReader& arguments) {
    switch (letter) {
    case 'i':
        return appendNumber<std::int64_t>(out, arguments);
    case 'u':
        return appendNumber<std::uint64_t>(out, arguments);
    case 'd':
        return appendNumber<double>(out, arguments);
    case 'b':
        return appendBool(out, arguments);
    case 's':
        return appendString(out, arguments);
    case 'p':
        return appendAddress(out, arguments);
    default:
        return Result::bad;
    }
}

} // namespace

bool appendRingText(std::string& out, std::string_view text, std::string_view arguments) {
    ByteReader reader(arguments);
    while (!text.empty()) {
        std::size_t percent = std::min(text.find('%'), text.size());
        appendPrintable(out, text.substr(0, percent));
        text.remove_prefix(percent);
        if (text.empty()) {
            break;
        }
        char letter = text.size() < 2 ? '\0' : text[1];
        text.remove_prefix(std::min<std::size_t>(2, text.size()));
        if (letter == '%') {
            out += '%';
            continue;
        }
        Result result = appendArgument(out, letter, reader);
        if (result == Result::ended) {
            out += "...";
        }
        if (result != Result::done) {
            return result == Result::ended && reader.rest().empty();
        }
    }
    return reader.rest().empty();
}

} // namespace Ringlog
