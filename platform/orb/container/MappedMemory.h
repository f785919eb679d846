#pragma once

#include <cstddef>

// A sanitizer that watches memory sees only what comes from the allocator.
#if defined(__SANITIZE_ADDRESS__)
#define ORB_MEMORY_IS_WATCHED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ORB_MEMORY_IS_WATCHED 1
#endif
#endif

namespace Orb {

/// Memory straight from the system, which has it back at once when it is released. From the general
/// allocator, the blocks that a table leaves behind while it grows would be holes between what
/// lives long, and resident for good.
class MappedMemory {
  public:
    /// Below this many bytes the general allocator does as well.
    static constexpr std::size_t least = 65536;

#ifdef ORB_MEMORY_IS_WATCHED
    static constexpr bool isUsed = false;
#else
    static constexpr bool isUsed = true;
#endif

    /// Zeroed, for a caller that soon writes to all of it. Null where there is no memory.
    static void* tryTake(std::size_t bytes) noexcept;

    /// Of an alignment of its own size, a power of two and a multiple of the system's page; zeroed
    /// and not yet resident. Null where there is no memory.
    static void* tryTakeAligned(std::size_t bytes) noexcept;

    static void release(void* memory, std::size_t bytes) noexcept;
};

} // namespace Orb
