#pragma once

#include <cstddef>
#include <new>

namespace Orb {

/// Memory of that alignment. An alignment that ordinary memory has is not asked for: allocators
/// take several times as long for what is aligned on demand.
template <std::size_t alignment>
struct AlignedMemory {
    static constexpr bool ordinary = alignment <= __STDCPP_DEFAULT_NEW_ALIGNMENT__;

    /// Throws std::bad_alloc.
    static void* allocate(std::size_t bytes) {
        if constexpr (ordinary) {
            return ::operator new(bytes);
        } else {
            return ::operator new(bytes, std::align_val_t(alignment));
        }
    }

    /// Null where there is no memory.
    static void* tryAllocate(std::size_t bytes) noexcept {
        if constexpr (ordinary) {
            return ::operator new(bytes, std::nothrow);
        } else {
            return ::operator new(bytes, std::align_val_t(alignment), std::nothrow);
        }
    }

    static void release(void* memory) noexcept {
        if constexpr (ordinary) {
            ::operator delete(memory);
        } else {
            ::operator delete(memory, std::align_val_t(alignment));
        }
    }
};

} // namespace Orb
