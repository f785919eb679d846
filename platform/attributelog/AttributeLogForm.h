#pragma once

#include <concepts>
#include <string>
#include <type_traits>

#include "platform/attributelog/AttributeLogInput.h"
#include "platform/orb/attribute/Value.h"
#include "platform/orb/value/BoundedString.h"

namespace Orb {

/// Appends the number in network byte order.
template <std::unsigned_integral T>
void appendBigEndian(std::string& out, T value) {
    for (std::size_t byte = sizeof(T); byte > 0; --byte) {
        out +=
            static_cast<char>(static_cast<unsigned char>(std::uint64_t{value} >> 8 * (byte - 1)));
    }
}

inline void appendLogString(std::string& out, std::string_view string) {
    appendBigEndian(out, static_cast<std::uint32_t>(string.size()));
    out += string;
}

/// How values of a type stand in an attribute log: write(out, value) and read(in), which throws
/// ParseError or RangeError for what is no such value.
template <typename T>
struct AttributeLogForm;

template <>
struct AttributeLogForm<bool> {
    static void write(std::string& out, bool value) { out += static_cast<char>(value); }
    static bool read(AttributeLogInput& in) {
        const auto number = in.number<std::uint8_t>();
        if (number > 1) {
            in.fail("a flag that is neither 0 nor 1");
        }
        return number == 1;
    }
};

template <typename T>
    requires std::derived_from<T, BoundedString<T, T::maxLength>>
struct AttributeLogForm<T> {
    static void write(std::string& out, const T& value) { appendLogString(out, value.value()); }
    static T read(AttributeLogInput& in) { return T(in.string()); }
};

template <IsValue T>
struct AttributeLogForm<T> {
    static void write(std::string& out, const T& value) {
        T::visitFields([&](std::string_view, auto member) {
            AttributeLogForm<std::remove_cvref_t<decltype(value.*member)>>::write(out,
                                                                                  value.*member);
        });
    }
    static T read(AttributeLogInput& in) {
        T value;
        T::visitFields([&](std::string_view, auto member) {
            value.*member =
                AttributeLogForm<std::remove_cvref_t<decltype(value.*member)>>::read(in);
        });
        return value;
    }
};

} // namespace Orb
