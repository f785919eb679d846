#include "platform/orb/container/MappedMemory.h"

#include <cstdint>
#include <sys/mman.h>

namespace Orb {

namespace {

void* map(std::size_t bytes, int flags) noexcept {
    void* memory =
        mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | flags, -1, 0);
    return memory == MAP_FAILED ? nullptr : memory;
}

} // namespace

void* MappedMemory::tryTake(std::size_t bytes) noexcept { return map(bytes, MAP_POPULATE); }

// One mapping mostly comes to lie right below the one before, which leaves it aligned.
void* MappedMemory::tryTakeAligned(std::size_t bytes) noexcept {
    const auto excess = [bytes](void* memory) {
        return reinterpret_cast<std::uintptr_t>(memory) & (bytes - 1);
    };
    void* memory = map(bytes, 0);
    if (memory == nullptr || excess(memory) == 0) {
        return memory;
    }
    release(memory, bytes);
    memory = map(2 * bytes, 0);
    if (memory == nullptr) {
        return nullptr;
    }
    auto* begin = static_cast<std::byte*>(memory);
    const std::size_t before = (bytes - excess(memory)) & (bytes - 1);
    if (before != 0) {
        release(begin, before);
    }
    release(begin + before + bytes, bytes - before);
    return begin + before;
}

void MappedMemory::release(void* memory, std::size_t bytes) noexcept {
    if (bytes != 0) {
        munmap(memory, bytes);
    }
}

} // namespace Orb
