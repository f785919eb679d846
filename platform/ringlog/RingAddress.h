#pragma once

#include <array>
#include <cstdint>

#include "platform/ringlog/RingLayout.h"

namespace Ringlog {

/// A prefix or an address with mask as a ring message carries it.
struct RingAddress {
    std::uint8_t family = 0;                                ///< 4, 6, or 0 when unset
    std::uint8_t length = 0;                                ///< bits of the mask
    std::array<std::uint8_t, Layout::addressBytes> bytes{}; ///< network order; IPv4 fills four
};

} // namespace Ringlog
