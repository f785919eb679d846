#pragma once

#include <compare>
#include <concepts>
#include <cstdint>
#include <ostream>
#include <string>

#include "platform/orb/value/Hash.h"
#include "platform/orb/value/Text.h"

namespace Orb {

/// A number with a meaning, such as an id: no arithmetic, no implicit conversion, so that two kinds
/// of ids cannot be mixed up. Ordered numerically and printed as the number. `Tag` is the class
/// that derives from it.
template <typename Tag, std::integral T, T defaultNumber = T{}>
class StrongNumber {
  public:
    using Number = T;

    constexpr StrongNumber() = default;
    constexpr explicit StrongNumber(T value) : value_(value) {}

    constexpr T value() const { return value_; }

    /// True for the default.
    constexpr bool operator!() const { return value_ == defaultNumber; }

    std::uint64_t hash(std::uint64_t seed) const { return hashOf(value_, seed); }

    friend constexpr bool operator==(StrongNumber, StrongNumber) = default;
    friend constexpr auto operator<=>(StrongNumber, StrongNumber) = default;

    // The sum with zero makes a number of what would be printed as a character.
    friend std::ostream& operator<<(std::ostream& out, StrongNumber number) {
        return out << number.value_ + T{};
    }

  private:
    T value_ = defaultNumber;
};

template <typename T>
concept IsStrongNumber = requires(const T& number) {
    { number.value() } -> std::same_as<typename T::Number>;
    requires std::constructible_from<T, typename T::Number>;
};

template <IsStrongNumber T>
struct TextForm<T> {
    static void write(std::string& out, T number) {
        TextForm<typename T::Number>::write(out, number.value());
    }
    static T read(TextReader& in) { return T(TextForm<typename T::Number>::read(in)); }
};

} // namespace Orb
