#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>
#include <new>
#include <type_traits>

#include "platform/orb/container/AlignedMemory.h"
#include "platform/orb/container/HashTag.h"
#include "platform/orb/container/MappedMemory.h"

namespace Orb {

/// How large a table is.
struct HashTableShape {
    std::uint32_t homes;
    std::uint32_t slots; ///< those behind the homes take what the last homes have no room for
    std::uint32_t maxSize;

    static constexpr std::uint32_t denseSize = 8;

    /// A table for at least `size` entries. Those of up to `denseSize` are plain sorted arrays,
    /// packed full.
    static HashTableShape forSize(std::uint64_t size);
};

/// The memory of a HashTable, one allocation: this header, slots + 1 tags (0: empty; the last one
/// is HashTag::end and stops every scan), and slots entries. Which tags and entries are there is up
/// to the table.
template <typename T>
struct HashTableBlock {
    std::uint32_t homes;
    std::uint32_t slots;
    std::uint32_t maxSize;
    std::uint32_t size;
    std::uint32_t first;          ///< no entry lies before this slot
    std::uint32_t shrinkBelow;    ///< size under which shrinking is tried
    std::uint32_t retryCrowdedAt; ///< size from which growing may help against crowding again
    std::uint64_t distance;       ///< sum of all entries' slot minus home

    std::uint32_t* tags() { return reinterpret_cast<std::uint32_t*>(this + 1); }
    T* entries() {
        return reinterpret_cast<T*>(reinterpret_cast<std::byte*>(this) + entriesOffset(slots));
    }

    std::uint32_t home(std::uint32_t tag) const {
        return static_cast<std::uint32_t>((std::uint64_t{tag} * homes) >> 32);
    }

    static constexpr std::size_t bytesFor(std::size_t slots) {
        return entriesOffset(slots) + slots * sizeof(T);
    }

    /// An empty block. Throws std::bad_alloc.
    static HashTableBlock* allocate(const HashTableShape& shape) {
        const std::size_t bytes = bytesFor(shape.slots);
        void* memory = isMapped(bytes) ? MappedMemory::tryTake(bytes) : Memory::allocate(bytes);
        return memory == nullptr ? throw std::bad_alloc() : format(memory, shape);
    }

    /// An empty block, or null where there is no memory.
    static HashTableBlock* tryAllocate(const HashTableShape& shape) noexcept {
        const std::size_t bytes = bytesFor(shape.slots);
        void* memory = isMapped(bytes) ? MappedMemory::tryTake(bytes) : Memory::tryAllocate(bytes);
        return memory == nullptr ? nullptr : format(memory, shape);
    }

    /// Gives the memory of a block back whose entries have gone.
    static void release(HashTableBlock* block) noexcept {
        const std::size_t bytes = bytesFor(block->slots);
        if (isMapped(bytes)) {
            MappedMemory::release(block, bytes);
        } else {
            Memory::release(block);
        }
    }

    /// Destroys the entries of a block and gives it back.
    static void destroy(HashTableBlock* block) noexcept {
        if constexpr (!std::is_trivially_destructible_v<T>) {
            for (std::uint32_t slot = block->first; slot < block->slots; ++slot) {
                if (block->tags()[slot] != 0) {
                    std::destroy_at(block->entries() + slot);
                }
            }
        }
        release(block);
    }

  private:
    static constexpr bool isMapped(std::size_t bytes) {
        return MappedMemory::isUsed && bytes >= MappedMemory::least;
    }

    using Memory = AlignedMemory<(alignof(T) > 8 ? alignof(T) : 8)>;

    static constexpr std::size_t entriesOffset(std::size_t slots) {
        const std::size_t end = sizeof(HashTableBlock) + (slots + 1) * sizeof(std::uint32_t);
        return (end + alignof(T) - 1) / alignof(T) * alignof(T);
    }

    static HashTableBlock* format(void* memory, const HashTableShape& shape) {
        static_assert(alignof(HashTableBlock) <= 8);
        auto* block = std::construct_at(static_cast<HashTableBlock*>(memory));
        *block = {shape.homes, shape.slots, shape.maxSize, 0, shape.slots, 0, 0, 0};
        block->shrinkBelow = shape.maxSize > HashTableShape::denseSize ? shape.maxSize / 8 : 0;
        std::memset(block->tags(), 0, std::size_t{shape.slots} * sizeof(std::uint32_t));
        block->tags()[shape.slots] = HashTag::end;
        return block;
    }
};

/// Walks a table in hash order. Any insertion or erasure invalidates it.
template <typename Element>
class HashTableIterator {
  public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = std::remove_const_t<Element>;
    using difference_type = std::ptrdiff_t;
    using pointer = Element*;
    using reference = Element&;

    HashTableIterator() = default;
    HashTableIterator(const std::uint32_t* tag, Element* element) : tag_(tag), element_(element) {}

    reference operator*() const { return *element_; }
    pointer operator->() const { return element_; }
    HashTableIterator& operator++() {
        const std::uint32_t* from = tag_ + 1;
        const std::uint32_t* to = from;
        while (*to == 0) {
            ++to;
        }
        element_ += to - tag_;
        tag_ = to;
        return *this;
    }
    HashTableIterator operator++(int) {
        HashTableIterator before = *this;
        ++*this;
        return before;
    }
    bool operator==(const HashTableIterator& other) const { return element_ == other.element_; }

  private:
    const std::uint32_t* tag_ = nullptr;
    Element* element_ = nullptr;
};

} // namespace Orb
