#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <compare>
#include <cstdint>

#include "platform/orb/value/Hash.h"

namespace Lanx {

/// Room for an address of either family, in network order. An IPv4 address stands at the head and
/// the rest is zero.
using AddressBytes = std::array<std::uint8_t, 16>;

/// An address as two numbers, the more significant one first.
using AddressWords = std::array<std::uint64_t, 2>;

constexpr std::uint64_t networkOrder(std::uint64_t word) {
    return std::endian::native == std::endian::little ? __builtin_bswap64(word) : word;
}

constexpr AddressWords wordsOf(const AddressBytes& bytes) {
    const auto words = std::bit_cast<AddressWords>(bytes);
    return {networkOrder(words[0]), networkOrder(words[1])};
}

constexpr AddressBytes bytesOf(const AddressWords& words) {
    return std::bit_cast<AddressBytes>(
        AddressWords{networkOrder(words[0]), networkOrder(words[1])});
}

/// The first `count` (0 to 64) bits of a word.
constexpr std::uint64_t leadingBits(unsigned count) {
    return count == 0 ? 0 : ~std::uint64_t{0} << (64 - count);
}

/// The address with every bit behind the first `len` (0 to 128) cleared.
constexpr AddressBytes maskedBytes(const AddressBytes& bytes, unsigned len) {
    const AddressWords words = wordsOf(bytes);
    return bytesOf({words[0] & leadingBits(std::min(len, 64U)),
                    words[1] & leadingBits(len > 64 ? len - 64 : 0)});
}

/// The order of the bytes, front to back.
constexpr std::strong_ordering compareBytes(const AddressBytes& left, const AddressBytes& right) {
    return wordsOf(left) <=> wordsOf(right);
}

// Two words rather than a call that compares bytes: this is asked of every key that is looked up.
constexpr bool sameBytes(const AddressBytes& left, const AddressBytes& right) {
    const auto leftWords = std::bit_cast<AddressWords>(left);
    const auto rightWords = std::bit_cast<AddressWords>(right);
    return leftWords[0] == rightWords[0] && leftWords[1] == rightWords[1];
}

/// Whether the first 10 bits are those of fe80::/10.
constexpr bool isLinkLocal6(const AddressBytes& bytes) {
    return bytes[0] == 0xfe && (bytes[1] & 0xc0) == 0x80;
}

inline void mixBytes(Orb::Hasher& hasher, const AddressBytes& bytes) {
    const AddressWords words = wordsOf(bytes);
    hasher.mix(words[0]);
    hasher.mix(words[1]);
}

} // namespace Lanx
