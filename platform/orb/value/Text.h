#pragma once

#include <charconv>
#include <concepts>
#include <ostream>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>

#include "platform/orb/value/Error.h"
#include "platform/orb/value/TextReader.h"

namespace Orb {

/// How a type is written as text and read back. Two static functions:
///   static void write(std::string& out, const T& value);   appends the text form
///   static T read(TextReader& in);                         the exact inverse; ParseError,
///   RangeError
/// Specialised below for the built-in types and strings and beside each value type for the rest.
template <typename T>
struct TextForm;

template <typename T>
concept HasTextForm = requires(std::string& out, const T& value, TextReader& in) {
    TextForm<T>::write(out, value);
    { TextForm<T>::read(in) } -> std::same_as<T>;
};

/// The text form of a value.
template <HasTextForm T>
std::string valueToStrep(const T& value) {
    std::string out;
    TextForm<T>::write(out, value);
    return out;
}

/// The value of a text form; the whole text must be one. Throws ParseError, RangeError.
template <HasTextForm T>
T valueFromStrep(std::string_view text) {
    TextReader in(text);
    T value = TextForm<T>::read(in);
    in.end();
    return value;
}

/// "True" or "False".
template <>
struct TextForm<bool> {
    static void write(std::string& out, bool value);
    static bool read(TextReader& in);
};

/// Decimal, as short as it can be: no plus sign, no leading zeros, no minus zero.
template <std::integral T>
    requires(!std::same_as<T, bool>)
struct TextForm<T> {
    static void write(std::string& out, T value) {
        char digits[24];
        out.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
    }

    static T read(TextReader& in) {
        const std::string_view rest = in.rest();
        T value{};
        const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), value);
        if (error == std::errc::result_out_of_range) {
            throw RangeError("integer out of range");
        }
        const std::string_view token = rest.substr(0, static_cast<std::size_t>(end - rest.data()));
        if (error != std::errc() || token != valueToStrep(value)) {
            in.fail("integer");
        }
        in.take(token.size());
        return value;
    }
};

/// An enumeration is written as its number; any number of the underlying type is read.
template <typename T>
    requires std::is_enum_v<T>
struct TextForm<T> {
    using Number = std::underlying_type_t<T>;
    static void write(std::string& out, T value) {
        TextForm<Number>::write(out, static_cast<Number>(value));
    }
    static T read(TextReader& in) { return static_cast<T>(TextForm<Number>::read(in)); }
};

/// The shortest decimal that reads back as the same value; "inf" and "nan" for what has none.
template <>
struct TextForm<double> {
    static void write(std::string& out, double value);
    static double read(TextReader& in);
};

/// The bytes in single quotes: backslash and quote behind a backslash, everything that is not
/// printable ASCII as \xNN in lower case.
template <>
struct TextForm<std::string> {
    static void write(std::string& out, std::string_view value);
    static std::string read(TextReader& in);
};

/// A type whose printed form is a plain word, such as an address or a name:
///   void appendTo(std::string& out) const;        appends the word
///   static T fromString(std::string_view text);   the exact inverse; ParseError, RangeError
template <typename T>
concept PlainText = requires(const T& value, std::string& out, std::string_view text) {
    value.appendTo(out);
    { T::fromString(text) } -> std::same_as<T>;
};

/// The word of such a value.
template <PlainText T>
std::string plainText(const T& value) {
    std::string word;
    value.appendTo(word);
    return word;
}

/// The text form of such a type is its word in quotes.
template <PlainText T>
struct TextForm<T> {
    static void write(std::string& out, const T& value) {
        TextForm<std::string>::write(out, plainText(value));
    }
    static T read(TextReader& in) { return T::fromString(TextForm<std::string>::read(in)); }
};

} // namespace Orb
