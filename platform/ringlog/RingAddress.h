#pragma once

#include <array>
#include <cstdint>

#include "platform/ringlog/RingLayout.h"

namespace Ringlog {

/// An address, with or without mask, or a prefix as a ring message carries it.
struct RingAddress {
    static constexpr std::uint8_t noMask = 255;

    std::uint8_t family = 0;                                ///< 4, 6, or 0 when unset
    std::uint8_t length = 0;                                ///< bits of the mask, or noMask
    std::array<std::uint8_t, Layout::addressBytes> bytes{}; ///< network order; IPv4 fills four
};

} // namespace Ringlog
