#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

#include "platform/orb/container/HashTableBlock.h"

namespace Orb {

/// The table under HashMap and HashMap2018: a set of entries, each holding its key, that is walked
/// in hash order whatever its size and history.
///
/// An entry's tag is the top 32 bits of its key's mixed hash. Entries lie in one array sorted by
/// (tag, key), each at or behind its home slot (tag * homes / 2^32) with no empty slot in between:
/// linear probing without wrap-around. Home slots rise with the tag, so growing is one in-order
/// pass over tags and entries that hashes nothing again.
///
/// Sorted slots could pile up where the hashes present are not spread evenly: when entries are
/// inserted in hash order, or when the first half was drained and refilled. The table therefore
/// knows the sum of all entries' distances from their homes, which is also what inserting has cost
/// so far. It grows when the mean distance passes a limit and shrinks only when the mean will stay
/// small, which keeps both operations O(1) amortised.
///
/// What takes a key also takes its tag with it, where the caller has hashed the key already.
///
/// Cost: the block is made with the first entry and given back with the last; an entry has a tag of
/// four bytes besides itself.
///
/// Entries must be movable without exceptions; comparing and hashing keys must not throw. When an
/// insertion throws std::bad_alloc, the table is unchanged. Destructors of entries may use the
/// table: entries are destroyed after they have been taken out.
///
/// Thread rule: one agent thread, no locks.
template <typename T, typename KeyOf>
class HashTable {
  public:
    using Key = std::remove_cvref_t<decltype(std::declval<KeyOf>()(std::declval<const T&>()))>;

    static_assert(std::is_nothrow_move_constructible_v<T>);

    using iterator = HashTableIterator<T>;
    using const_iterator = HashTableIterator<const T>;

    HashTable() = default;
    explicit HashTable(KeyOf keyOf) : keyOf_(std::move(keyOf)) {}
    HashTable(HashTable&& other) noexcept
        : keyOf_(other.keyOf_), block_(std::exchange(other.block_, nullptr)) {}
    HashTable(const HashTable& other)
        requires std::is_copy_constructible_v<T>
    {
        if (other.block_ == nullptr) {
            return;
        }
        const Block& source = *other.block_;
        HashTable copy(other.keyOf_);
        copy.block_ = Block::allocate(Shape{source.homes, source.slots, source.maxSize});
        for (std::uint32_t slot = other.firstSlot(), left = source.size; left > 0; ++slot, --left) {
            slot = other.occupiedFrom(slot);
            std::construct_at(copy.block_->entries() + slot, other.block_->entries()[slot]);
            copy.block_->tags()[slot] = other.block_->tags()[slot];
            copy.block_->first = std::min(copy.block_->first, slot);
            ++copy.block_->size;
        }
        copy.block_->distance = source.distance;
        swap(copy);
    }
    HashTable& operator=(HashTable other) noexcept {
        swap(other);
        return *this;
    }
    ~HashTable() {
        while (block_ != nullptr) {
            Block::destroy(std::exchange(block_, nullptr));
        }
    }

    void swap(HashTable& other) noexcept {
        std::swap(block_, other.block_);
        std::swap(keyOf_, other.keyOf_);
    }

    std::size_t size() const { return block_ == nullptr ? 0 : block_->size; }
    bool empty() const { return block_ == nullptr; }

    iterator begin() { return iteratorAt<T>(firstSlot()); }
    iterator end() { return iteratorAt<T>(slots()); }
    const_iterator begin() const { return iteratorAt<const T>(firstSlot()); }
    const_iterator end() const { return iteratorAt<const T>(slots()); }

    /// The entry with that key, or null. Valid until the next insertion or erasure.
    T* findEntry(const Key& key) { return findEntry(key, tagOf(key)); }
    const T* findEntry(const Key& key) const { return findEntry(key, tagOf(key)); }
    T* findEntry(const Key& key, HashTag tag) { return lookUp(key, tag.value()); }
    const T* findEntry(const Key& key, HashTag tag) const { return lookUp(key, tag.value()); }

    bool contains(const Key& key) const { return findEntry(key) != nullptr; }

    /// Walking by position, which survives any change between two steps: the walk meets every entry
    /// that is there throughout exactly once. All return null at the end; the entry is valid until
    /// the next insertion or erasure.
    /// - first(): the first entry of the table.
    /// - after(key): the first entry behind the key's position, whether the key is there or not.
    /// - atOrAfter(key): the key's entry if it is there, otherwise as after(key).
    T* first() { return entryAt(firstSlot()); }
    const T* first() const { return entryAt(firstSlot()); }
    T* after(const Key& key) { return entryAt(slotBehind(key, true)); }
    const T* after(const Key& key) const { return entryAt(slotBehind(key, true)); }
    T* atOrAfter(const Key& key) { return entryAt(slotBehind(key, false)); }
    const T* atOrAfter(const Key& key) const { return entryAt(slotBehind(key, false)); }

    /// The entry behind one of the table's, or null.
    const T* next(const T* entry) const {
        return entryAt(occupiedFrom(static_cast<std::uint32_t>(entry - block_->entries()) + 1));
    }

    /// The tag of one of the table's entries, which is at hand.
    HashTag tagAt(const T* entry) const {
        return HashTag(block_->tags()[entry - block_->entries()]);
    }

    /// Fetches what a search for the key of that tag will read first, for a caller that has work
    /// until then.
    void prefetch(HashTag tag) const {
        if (block_ != nullptr) {
            const std::uint32_t slot = block_->home(tag.value());
            __builtin_prefetch(block_->tags() + slot);
            __builtin_prefetch(block_->entries() + slot);
        }
    }

    /// The entry that a search for the key of that tag would look at first, most likely the key's
    /// if that is there; or null. Reads nothing that an entry points to.
    const T* likely(HashTag tag) const {
        if (block_ == nullptr) {
            return nullptr;
        }
        const std::uint32_t slot = tagBound(tag.value());
        return block_->tags()[slot] == tag.value() ? block_->entries() + slot : nullptr;
    }

    /// Takes the entry of that key out of the table.
    std::optional<T> take(const Key& key) { return take(key, tagOf(key)); }
    std::optional<T> take(const Key& key, HashTag tag) {
        const T* entry = findEntry(key, tag);
        return entry == nullptr ? std::nullopt : std::optional<T>(take(entry));
    }
    /// Takes one of the table's entries, which is at hand, out of it.
    T take(const T* entry) {
        const auto slot = static_cast<std::uint32_t>(entry - block_->entries());
        T* present = block_->entries() + slot;
        T taken(std::move(*present));
        std::destroy_at(present);
        closeGap(slot);
        return taken;
    }

    /// Removes the entry of that key. Returns whether there was one.
    bool erase(const Key& key) { return erase(key, tagOf(key)); }
    bool erase(const Key& key, HashTag tag) {
        if constexpr (std::is_trivially_destructible_v<T>) {
            T* entry = findEntry(key, tag);
            if (entry != nullptr) {
                closeGap(static_cast<std::uint32_t>(entry - block_->entries()));
            }
            return entry != nullptr;
        } else {
            return take(key, tag).has_value();
        }
    }

    /// Removes all entries. Those that their destructors add stay.
    void clear() { HashTable(keyOf_).swap(*this); }

    /// Bytes allocated, for accounting.
    std::size_t allocatedBytes() const {
        return block_ == nullptr ? 0 : Block::bytesFor(block_->slots);
    }

  protected:
    [[no_unique_address]] KeyOf keyOf_{};

    /// Where a key is or belongs, found once for finding and then adding. Valid until the next
    /// insertion or erasure.
    struct Place {
        std::uint32_t tag;
        std::uint32_t slot;
    };

    Place placeOf(const Key& key) const { return placeOf(key, tagOf(key)); }
    Place placeOf(const Key& key, HashTag tag) const {
        return {tag.value(), block_ == nullptr ? 0 : lowerBound(tag.value(), key)};
    }

    /// The entry of the key whose place it is, or null.
    T* entryAt(const Place& place, const Key& key) {
        return block_ != nullptr && isAt(place, key) ? block_->entries() + place.slot : nullptr;
    }

    /// Adds an entry at the place of its key, which must not be in the table.
    T* insertNew(T entry, Place place) {
        const Key& key = keyOf_(entry);
        if (block_ == nullptr || block_->size == block_->maxSize) {
            grow();
            place.slot = lowerBound(place.tag, key);
        }
        std::uint32_t gap = nextGap(place.slot);
        if (gap == block_->slots) {
            relayout(Shape{block_->homes, block_->slots + (block_->slots - block_->homes) + 8,
                           block_->maxSize});
            place.slot = lowerBound(place.tag, key);
            gap = nextGap(place.slot);
        }
        Block& block = *block_;
        const auto [tag, slot] = place;
        const std::uint64_t distance = block.distance + (gap - block.home(tag));
        if (distance > crowdedMean * (block.size + 8U) && block.size >= block.retryCrowdedAt
            && spread(distance)) {
            place.slot = lowerBound(place.tag, key);
            return insertNew(std::move(entry), place);
        }
        shiftRight(slot, gap);
        std::construct_at(block.entries() + slot, std::move(entry));
        block.tags()[slot] = tag;
        block.distance = distance;
        block.first = std::min(block.first, slot);
        ++block.size;
        return block.entries() + slot;
    }

  private:
    static constexpr std::uint64_t crowdedMean = 8;
    static constexpr std::uint64_t roomyMean = 4;
    static constexpr std::uint32_t maxHomesPerEntry = 128;
    static constexpr std::uint32_t endTag = HashTag::end;

    using Shape = HashTableShape;
    using Block = HashTableBlock<T>;

    template <typename Element>
    HashTableIterator<Element> iteratorAt(std::uint32_t slot) const {
        if (block_ == nullptr) {
            return {};
        }
        return {block_->tags() + slot, block_->entries() + slot};
    }

    std::uint32_t slots() const { return block_ == nullptr ? 0 : block_->slots; }

    T* entryAt(std::uint32_t slot) const {
        return slot == slots() ? nullptr : block_->entries() + slot;
    }

    /// First occupied slot at or behind `slot`, or the number of slots.
    std::uint32_t occupiedFrom(std::uint32_t slot) const {
        const std::uint32_t* tags = block_->tags();
        while (tags[slot] == 0) {
            ++slot;
        }
        return slot;
    }

    std::uint32_t firstSlot() const {
        if (block_ == nullptr) {
            return 0;
        }
        // Remembered, so that draining from the front does not scan the drained part every time.
        return block_->first = occupiedFrom(block_->first);
    }

    /// First slot at or behind the tag's home that is empty or holds a tag not below it.
    std::uint32_t tagBound(std::uint32_t tag) const {
        const std::uint32_t* tags = block_->tags();
        std::uint32_t slot = block_->home(tag);
        while (tags[slot] - 1 < tag - 1) { // an empty slot's 0 becomes the largest value
            ++slot;
        }
        return slot;
    }

    static HashTag tagOf(const Key& key) { return HashTag::of(key); }

    bool isAt(const Place& place, const Key& key) const {
        return block_->tags()[place.slot] == place.tag
               && keyOf_(block_->entries()[place.slot]) == key;
    }

    T* lookUp(const Key& key, std::uint32_t tag) const {
        if (block_ == nullptr) {
            return nullptr;
        }
        const std::uint32_t* tags = block_->tags();
        for (std::uint32_t slot = tagBound(tag); tags[slot] == tag; ++slot) {
            T* entry = block_->entries() + slot;
            if (keyOf_(*entry) == key) {
                return entry;
            }
        }
        return nullptr;
    }

    std::uint32_t lowerBound(std::uint32_t tag, const Key& key) const {
        std::uint32_t slot = tagBound(tag);
        while (block_->tags()[slot] == tag && keyOf_(block_->entries()[slot]) < key) {
            ++slot;
        }
        return slot;
    }

    std::uint32_t slotBehind(const Key& key, bool skipEqual) const {
        if (block_ == nullptr) {
            return 0;
        }
        const Place place = placeOf(key);
        return occupiedFrom(skipEqual && isAt(place, key) ? place.slot + 1 : place.slot);
    }

    std::uint32_t nextGap(std::uint32_t slot) const {
        const std::uint32_t* tags = block_->tags();
        while (tags[slot] != 0 && tags[slot] != endTag) {
            ++slot;
        }
        return slot;
    }

    static void relocate(T* from, T* to) noexcept {
        std::construct_at(to, std::move(*from));
        std::destroy_at(from);
    }

    void shiftRight(std::uint32_t slot, std::uint32_t gap) {
        if (slot == gap) {
            return;
        }
        T* entries = block_->entries();
        std::uint32_t* tags = block_->tags();
        if constexpr (std::is_trivially_copyable_v<T>) {
            std::memmove(static_cast<void*>(entries + slot + 1), entries + slot,
                         (gap - slot) * sizeof(T));
        } else {
            for (std::uint32_t to = gap; to > slot; --to) {
                relocate(entries + to - 1, entries + to);
            }
        }
        std::memmove(tags + slot + 1, tags + slot, (gap - slot) * sizeof(*tags));
    }

    void shiftLeft(std::uint32_t slot, std::uint32_t count) {
        if (count == 0) {
            return;
        }
        T* entries = block_->entries();
        std::uint32_t* tags = block_->tags();
        if constexpr (std::is_trivially_copyable_v<T>) {
            std::memmove(static_cast<void*>(entries + slot), entries + slot + 1, count * sizeof(T));
        } else {
            for (std::uint32_t to = slot; to < slot + count; ++to) {
                relocate(entries + to + 1, entries + to);
            }
        }
        std::memmove(tags + slot, tags + slot + 1, count * sizeof(*tags));
    }

    /// Moves the entries behind an emptied slot back towards their homes.
    void closeGap(std::uint32_t slot) {
        Block& block = *block_;
        std::uint32_t* tags = block.tags();
        block.distance -= slot - block.home(tags[slot]);
        std::uint32_t end = slot + 1;
        while (tags[end] != 0 && tags[end] != endTag && block.home(tags[end]) < end) {
            ++end;
        }
        const std::uint32_t moved = end - slot - 1;
        shiftLeft(slot, moved);
        tags[end - 1] = 0;
        block.distance -= moved;
        --block.size;
        if (block.size == 0) {
            Block::release(std::exchange(block_, nullptr));
        } else if (block.size < block.shrinkBelow) {
            shrink();
        }
    }

    void grow() {
        const std::uint64_t size = block_ == nullptr ? 0 : block_->maxSize;
        relayout(Shape::forSize(size < Shape::denseSize ? size * 2 : size + size / 2));
    }

    /// Sum of distances that the present entries would have with that many homes.
    std::uint64_t distanceWith(std::uint32_t homes) const {
        const std::uint32_t* tags = block_->tags();
        std::uint64_t distance = 0;
        std::uint32_t next = 0;
        for (std::uint32_t slot = firstSlot(), left = block_->size; left > 0; ++slot) {
            if (tags[slot] != 0) {
                const auto at =
                    static_cast<std::uint32_t>((std::uint64_t{tags[slot]} * homes) >> 32);
                next = std::max(next, at);
                distance += next - at;
                ++next;
                --left;
            }
        }
        return distance;
    }

    /// Grows until the entries lie close to their homes, if that can be had for a reasonable number
    /// of slots; with equal hashes, it cannot. Returns whether the table was laid out anew.
    bool spread(std::uint64_t distance) {
        const std::uint64_t limit =
            std::min<std::uint64_t>(std::uint64_t{block_->size} * maxHomesPerEntry, endTag / 2);
        for (std::uint64_t size = std::uint64_t{block_->maxSize} * 2; size <= limit; size *= 2) {
            const Shape shape = Shape::forSize(size);
            if (distanceWith(shape.homes) < std::min(distance, roomyMean * block_->size)) {
                relayout(shape);
                return true;
            }
        }
        block_->retryCrowdedAt = block_->size * 2;
        return false;
    }

    void shrink() noexcept {
        const Shape shape = Shape::forSize(std::uint64_t{block_->size} * 2);
        Block* target = nullptr;
        if (shape.slots < block_->slots && distanceWith(shape.homes) <= roomyMean * block_->size) {
            target = Block::tryAllocate(shape);
        }
        if (target == nullptr || !moveInto(target)) {
            block_->shrinkBelow = block_->size / 4;
        }
    }

    void relayout(Shape shape) {
        Block* target = Block::allocate(shape);
        if (block_ == nullptr) {
            block_ = target;
            return;
        }
        while (!moveInto(target)) {
            shape.slots += shape.slots - shape.homes + 8;
            target = Block::allocate(shape);
        }
    }

    /// Moves all entries to an empty block in one pass. False, with nothing moved and the block
    /// given back, when its slots behind the last home do not suffice.
    bool moveInto(Block* target) noexcept {
        std::uint32_t* from = block_->tags();
        std::uint32_t* to = target->tags();
        // First the tags alone, to see where the entries go.
        std::uint32_t next = 0;
        for (std::uint32_t slot = firstSlot(), left = block_->size; left > 0; ++slot) {
            if (from[slot] != 0) {
                const std::uint32_t at = target->home(from[slot]);
                next = std::max(next, at);
                if (next >= target->slots) {
                    Block::release(target);
                    return false;
                }
                to[next] = from[slot];
                target->distance += next - at;
                ++next;
                --left;
            }
        }
        moveEntries(target);
        target->size = block_->size;
        Block::release(std::exchange(block_, target));
        return true;
    }

    void moveEntries(Block* target) noexcept {
        T* source = block_->entries();
        T* destination = target->entries();
        const std::uint32_t* tags = block_->tags();
        std::uint32_t slot = occupiedFrom(block_->first);
        std::uint32_t next = target->first = target->home(tags[slot]);
        for (std::uint32_t left = block_->size; left > 0; ++slot) {
            if (tags[slot] != 0) {
                next = std::max(next, target->home(tags[slot]));
                relocate(source + slot, destination + next);
                ++next;
                --left;
            }
        }
    }

    Block* block_ = nullptr;
};

} // namespace Orb
