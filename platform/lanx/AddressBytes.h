#pragma once

#include <array>
#include <cstdint>

#include "platform/orb/Hash.h"

namespace Lanx {

/// Room for an address of either family, in network order. An IPv4 address stands at the head and
/// the rest is zero.
using AddressBytes = std::array<std::uint8_t, 16>;

/// Clears every bit behind the first `len` (0 to 128).
void clearHostBits(AddressBytes& bytes, unsigned len);

/// Whether the first `len` bits (0 to 128) of both are the same.
bool sameNetworkBits(const AddressBytes& left, const AddressBytes& right, unsigned len);

/// Whether the first 10 bits are those of fe80::/10.
constexpr bool isLinkLocal6(const AddressBytes& bytes) {
    return bytes[0] == 0xfe && (bytes[1] & 0xc0) == 0x80;
}

inline void mixBytes(Orb::Hasher& hasher, const AddressBytes& bytes) {
    std::uint64_t words[2];
    static_assert(sizeof words == sizeof bytes);
    std::memcpy(words, bytes.data(), sizeof words);
    hasher.mix(words[0]);
    hasher.mix(words[1]);
}

} // namespace Lanx
