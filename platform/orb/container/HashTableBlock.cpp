#include "platform/orb/container/HashTableBlock.h"

#include <algorithm>
#include <bit>

#include "platform/orb/value/Assert.h"

namespace Orb {

HashTableShape HashTableShape::forSize(std::uint64_t size) {
    if (size <= denseSize) {
        const auto slots = std::bit_ceil(std::max(static_cast<std::uint32_t>(size), 2U));
        return HashTableShape{1, slots, slots};
    }
    const std::uint64_t homes = size + size / 4 + 1;
    const std::uint64_t slack = std::clamp<std::uint64_t>(homes / 16, 4, 128);
    ORB_ASSERT(homes + slack < HashTag::end, "HashTable::slots < 2^32 - 1");
    return HashTableShape{static_cast<std::uint32_t>(homes),
                          static_cast<std::uint32_t>(homes + slack),
                          static_cast<std::uint32_t>(size)};
}

} // namespace Orb
