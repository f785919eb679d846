#pragma once

#include <concepts>
#include <cstdint>
#include <string_view>
#include <type_traits>

#include "platform/ringlog/RingAddress.h"

namespace Ringlog {

namespace Detail {

/// An address gives its bytes; what has a mask gives its address and the length of the mask.
template <typename T>
concept IsAddress = requires(const T& value) {
    { value.bytes() } -> std::convertible_to<decltype(RingAddress::bytes)>;
};
template <typename T>
concept HasMask = requires(const T& value) {
    value.addr().bytes();
    value.len();
};

/// The bits of an address, which tell its family; 0 when it is unset.
template <typename T>
constexpr unsigned addressBits(const T& address) {
    if constexpr (requires { address.bits(); }) {
        return address.bits();
    } else {
        return T::bits;
    }
}

template <typename T>
RingAddress ringAddress(const T& address, unsigned length) {
    unsigned bits = addressBits(address);
    RingAddress result;
    result.family = bits == 32 ? 4 : bits == 128 ? 6 : 0;
    result.length = static_cast<std::uint8_t>(length);
    result.bytes = address.bytes();
    return result;
}

} // namespace Detail

/// How a value travels in a ring message. `of(value)` gives it as one of the kinds a message knows:
/// std::int64_t, std::uint64_t, double, bool, std::string_view or RingAddress. Numbers, enums and
/// texts are known here, and so is every type whose `name()` is a text that lives as long as the
/// value, whose `value()` is itself known, or that looks like an address or a prefix. Specialise it
/// for other types.
template <typename T>
struct RingArgument {
    static constexpr auto of(const T& value) {
        if constexpr (std::same_as<T, bool>) {
            return static_cast<bool>(value);
        } else if constexpr (std::same_as<T, char>) {
            return std::string_view(&value, 1);
        } else if constexpr (std::signed_integral<T>) {
            return static_cast<std::int64_t>(value);
        } else if constexpr (std::unsigned_integral<T> || std::is_enum_v<T>) {
            return static_cast<std::uint64_t>(value);
        } else if constexpr (std::floating_point<T>) {
            return static_cast<double>(value);
        } else if constexpr (std::convertible_to<const T&, std::string_view>) {
            return static_cast<std::string_view>(value);
        } else if constexpr (requires { std::string_view(value.name()); }) {
            static_assert(!std::same_as<decltype(value.name()), std::string>,
                          "the name would be gone before it is written");
            return std::string_view(value.name());
        } else if constexpr (Detail::HasMask<T>) {
            return Detail::ringAddress(value.addr(), value.len());
        } else if constexpr (Detail::IsAddress<T>) {
            return Detail::ringAddress(value, RingAddress::noMask);
        } else {
            static_assert(std::is_reference_v<decltype(value.value())>
                              || std::is_trivially_destructible_v<decltype(value.value())>,
                          "the value would be gone before it is written");
            return RingArgument<std::remove_cvref_t<decltype(value.value())>>::of(value.value());
        }
    }
};

/// The placeholder letter of a kind, see RingLayout.h.
template <typename Kind>
consteval char ringLetter() {
    if constexpr (std::same_as<Kind, bool>) {
        return 'b';
    } else if constexpr (std::same_as<Kind, std::int64_t>) {
        return 'i';
    } else if constexpr (std::same_as<Kind, std::uint64_t>) {
        return 'u';
    } else if constexpr (std::same_as<Kind, double>) {
        return 'd';
    } else if constexpr (std::same_as<Kind, std::string_view>) {
        return 's';
    } else {
        static_assert(std::same_as<Kind, RingAddress>);
        return 'p';
    }
}

} // namespace Ringlog
