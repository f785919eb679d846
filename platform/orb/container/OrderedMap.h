#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <new>
#include <optional>
#include <set>
#include <type_traits>
#include <utility>

#include "platform/orb/container/AlignedMemory.h"
#include "platform/orb/container/MapEntry.h"

namespace Orb {

/// A map in key order, made for holding one entry, which is nearly always the case where it is
/// used, and sound for a hundred thousand. Empty, it is a null pointer; up to 32 entries are a
/// sorted array in one block of fitting size; more live in a balanced tree.
///
/// Entries must be movable without exceptions; comparing keys must not throw. When an insertion
/// throws std::bad_alloc, the map holds what it held. Destructors of entries may use the map:
/// entries are destroyed after they have been taken out.
///
/// Thread rule: one agent thread, no locks.
template <typename K, typename V>
class OrderedMap {
  public:
    using Entry = MapEntry<K, V>;

    static_assert(std::is_nothrow_move_constructible_v<Entry>);

  private:
    struct ByKey {
        using is_transparent = void;
        bool operator()(const Entry& a, const Entry& b) const { return a.key() < b.key(); }
        bool operator()(const Entry& a, const K& b) const { return a.key() < b; }
        bool operator()(const K& a, const Entry& b) const { return a < b.key(); }
    };
    using Tree = std::set<Entry, ByKey>;
    using TreeIterator = typename Tree::const_iterator;

  public:
    /// Walks in key order. Any insertion or erasure invalidates it.
    template <typename Element>
    class BasicIterator {
      public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = Entry;
        using difference_type = std::ptrdiff_t;
        using pointer = Element*;
        using reference = Element&;

        BasicIterator() = default;
        /// At an element of an array.
        explicit BasicIterator(Element* element) : element_(element) {}

        // An element's value takes no part in the order, so changing it in the tree is sound.
        reference operator*() const {
            return element_ != nullptr ? *element_ : const_cast<reference>(*node_);
        }
        pointer operator->() const { return &**this; }
        BasicIterator& operator++() {
            if (element_ != nullptr) {
                ++element_;
            } else {
                ++node_;
            }
            return *this;
        }
        BasicIterator operator++(int) {
            BasicIterator before = *this;
            ++*this;
            return before;
        }
        bool operator==(const BasicIterator&) const = default;

      private:
        friend class OrderedMap;
        explicit BasicIterator(TreeIterator node) : node_(node) {}

        Element* element_ = nullptr; ///< null while walking a tree
        TreeIterator node_{};
    };

    using iterator = BasicIterator<Entry>;
    using const_iterator = BasicIterator<const Entry>;

    OrderedMap() = default;
    /// Of two entries, in their order. They stay as they are when it throws.
    OrderedMap(Entry&& smaller, Entry&& greater) : block_(allocateArray(2)) {
        if (block_ == nullptr) {
            throw std::bad_alloc();
        }
        std::construct_at(arrayOf(block_), std::move(smaller));
        std::construct_at(arrayOf(block_) + 1, std::move(greater));
        block_->count = 2;
    }
    OrderedMap(OrderedMap&& other) noexcept : block_(std::exchange(other.block_, nullptr)) {}
    OrderedMap(const OrderedMap& other)
        requires std::is_copy_constructible_v<Entry>
    {
        OrderedMap copy;
        for (const Entry& entry : other) {
            copy.insertNew(Entry(entry));
        }
        swap(copy);
    }
    OrderedMap& operator=(OrderedMap other) noexcept {
        swap(other);
        return *this;
    }
    ~OrderedMap() {
        while (block_ != nullptr) {
            destroy(std::exchange(block_, nullptr));
        }
    }

    void swap(OrderedMap& other) noexcept { std::swap(block_, other.block_); }

    std::size_t size() const { return inTree() ? tree().size() : count(); }
    bool empty() const { return block_ == nullptr; }

    iterator begin() { return beginOf<Entry>(); }
    iterator end() { return endOf<Entry>(); }
    const_iterator begin() const { return beginOf<const Entry>(); }
    const_iterator end() const { return endOf<const Entry>(); }

    /// The value of that key, or null. Valid until the next insertion or erasure.
    V* find(const K& key) { return valueOf(findEntry(key)); }
    const V* find(const K& key) const { return valueOf<const Entry>(findEntry(key)); }
    bool contains(const K& key) const { return findEntry(key) != nullptr; }

    /// Walking by position, which survives any change between two steps. All return null at the
    /// end; the entry is valid until the next insertion or erasure.
    /// - first(): the entry of the smallest key.
    /// - after(key): the entry of the smallest key above `key`, whether that is there or not.
    /// - atOrAfter(key): the key's entry if it is there, otherwise as after(key).
    Entry* first() { return firstEntry(); }
    const Entry* first() const { return firstEntry(); }
    Entry* after(const K& key) { return entryAfter(key); }
    const Entry* after(const K& key) const { return entryAfter(key); }
    Entry* atOrAfter(const K& key) { return entryFrom(key); }
    const Entry* atOrAfter(const K& key) const { return entryFrom(key); }

    /// Adds the pair unless the key is there. Returns the key's value and whether it was added.
    std::pair<V*, bool> tryInsert(K key, V value = V()) {
        if (V* present = find(key)) {
            return {present, false};
        }
        return {&insertNew(Entry(std::move(key), std::move(value)))->value(), true};
    }

    /// Adds the pair or replaces the key's value. Returns whether the key was added.
    bool insertOrAssign(K key, V value) {
        if (V* present = find(key)) {
            std::swap(*present, value); // the old value dies last: its destructor may use the map
            return false;
        }
        insertNew(Entry(std::move(key), std::move(value)));
        return true;
    }

    /// Takes the entry of that key out of the map.
    std::optional<Entry> take(const K& key) {
        return inTree() ? takeFromTree(key) : takeFromArray(key);
    }

    /// Removes the entry of that key. Returns whether there was one.
    bool erase(const K& key) { return take(key).has_value(); }

    /// Removes all entries. Those that their destructors add stay.
    void clear() { OrderedMap().swap(*this); }

  private:
    static constexpr std::uint32_t maxArray = 32;
    static constexpr std::uint32_t backToArray = 16;

    /// Header of the allocation; the array of `capacity` entries, or the tree when capacity is
    /// zero, lies behind it.
    struct Block {
        std::uint32_t capacity;
        std::uint32_t count; ///< of the array; never zero
    };

    using Memory = AlignedMemory<std::max({alignof(Block), alignof(Entry), alignof(Tree)})>;

    static constexpr std::size_t behindHeader(std::size_t align) {
        return (sizeof(Block) + align - 1) / align * align;
    }
    template <typename T>
    static T* behind(Block* block) {
        return std::launder(
            reinterpret_cast<T*>(reinterpret_cast<std::byte*>(block) + behindHeader(alignof(T))));
    }
    static Entry* arrayOf(Block* block) { return behind<Entry>(block); }
    static Tree& treeOf(Block* block) { return *behind<Tree>(block); }

    bool inTree() const { return block_ != nullptr && block_->capacity == 0; }
    std::uint32_t count() const { return block_ == nullptr ? 0 : block_->count; }
    Entry* array() const { return block_ == nullptr ? nullptr : arrayOf(block_); }
    Tree& tree() const { return treeOf(block_); }

    static Block* allocateArray(std::uint32_t capacity) noexcept {
        void* memory = Memory::tryAllocate(behindHeader(alignof(Entry)) + capacity * sizeof(Entry));
        return memory == nullptr
                   ? nullptr
                   : std::construct_at(static_cast<Block*>(memory), Block{capacity, 0});
    }
    static Block* allocateTree() {
        void* memory = Memory::allocate(behindHeader(alignof(Tree)) + sizeof(Tree));
        auto* block = std::construct_at(static_cast<Block*>(memory), Block{0, 0});
        std::construct_at(
            reinterpret_cast<Tree*>(static_cast<std::byte*>(memory) + behindHeader(alignof(Tree))));
        return block;
    }
    static void release(Block* block) noexcept { Memory::release(block); }
    static void destroy(Block* block) noexcept {
        if (block->capacity == 0) {
            std::destroy_at(&treeOf(block));
        } else {
            std::destroy_n(arrayOf(block), block->count);
        }
        release(block);
    }

    template <typename Element>
    BasicIterator<Element> beginOf() const {
        return inTree() ? BasicIterator<Element>(tree().begin()) : BasicIterator<Element>(array());
    }
    template <typename Element>
    BasicIterator<Element> endOf() const {
        return inTree() ? BasicIterator<Element>(tree().end())
                        : BasicIterator<Element>(array() + count());
    }

    template <typename E>
    static auto valueOf(E* entry) -> decltype(&entry->value()) {
        return entry == nullptr ? nullptr : &entry->value();
    }

    /// Place of the first array entry whose key is not below `key`.
    Entry* arrayBound(const K& key) const {
        return std::lower_bound(array(), array() + count(), key, ByKey());
    }

    Entry* entryOrNull(Entry* entry) const { return entry == array() + count() ? nullptr : entry; }
    Entry* entryOrNull(TreeIterator node) const {
        return node == tree().end() ? nullptr : const_cast<Entry*>(&*node);
    }

    Entry* firstEntry() const {
        return inTree() ? entryOrNull(tree().begin()) : entryOrNull(array());
    }
    Entry* entryFrom(const K& key) const {
        return inTree() ? entryOrNull(tree().lower_bound(key)) : entryOrNull(arrayBound(key));
    }
    Entry* entryAfter(const K& key) const {
        if (inTree()) {
            return entryOrNull(tree().upper_bound(key));
        }
        Entry* entry = entryOrNull(arrayBound(key));
        return entry == nullptr || key < entry->key() ? entry : entryOrNull(entry + 1);
    }
    Entry* findEntry(const K& key) const {
        Entry* entry = entryFrom(key);
        return entry == nullptr || key < entry->key() ? nullptr : entry;
    }

    static void relocate(Entry* from, Entry* to) noexcept {
        std::construct_at(to, std::move(*from));
        std::destroy_at(from);
    }

    Entry* insertNew(Entry entry) {
        if (block_ != nullptr && !inTree() && block_->count == maxArray) {
            becomeTree();
        }
        if (inTree()) {
            return const_cast<Entry*>(&*tree().insert(std::move(entry)).first);
        }
        if (block_ == nullptr || block_->count == block_->capacity) {
            if (!resizeArray(block_ == nullptr ? 1 : block_->capacity * 2)) {
                throw std::bad_alloc();
            }
        }
        Entry* const place = arrayBound(entry.key());
        for (Entry* to = array() + count(); to != place; --to) {
            relocate(to - 1, to);
        }
        ++block_->count;
        return std::construct_at(place, std::move(entry));
    }

    bool resizeArray(std::uint32_t capacity) noexcept {
        Block* target = allocateArray(capacity);
        if (target == nullptr) {
            return false;
        }
        for (; target->count < count(); ++target->count) {
            relocate(array() + target->count, arrayOf(target) + target->count);
        }
        if (block_ != nullptr) {
            release(block_);
        }
        block_ = target;
        return true;
    }

    void becomeTree() {
        OrderedMap grown;
        grown.block_ = allocateTree();
        // A node is allocated before its entry moves, so that running out of memory loses none.
        Tree& target = grown.tree();
        std::uint32_t moved = 0;
        try {
            for (; moved < count(); ++moved) {
                target.emplace_hint(target.end(), std::move(array()[moved]));
            }
        } catch (...) {
            for (std::uint32_t back = 0; back < moved; ++back) {
                std::destroy_at(array() + back);
                auto node = target.extract(target.begin());
                std::construct_at(array() + back, std::move(node.value()));
            }
            throw;
        }
        swap(grown);
    }

    void becomeArray() noexcept {
        Block* target = allocateArray(backToArray);
        if (target == nullptr) {
            return;
        }
        while (!tree().empty()) {
            auto node = tree().extract(tree().begin());
            std::construct_at(arrayOf(target) + target->count, std::move(node.value()));
            ++target->count;
        }
        destroy(std::exchange(block_, target));
    }

    std::optional<Entry> takeFromTree(const K& key) {
        const auto found = tree().find(key);
        if (found == tree().end()) {
            return std::nullopt;
        }
        auto node = tree().extract(found);
        if (tree().empty()) {
            destroy(std::exchange(block_, nullptr));
        } else if (tree().size() <= backToArray) {
            becomeArray();
        }
        return std::move(node.value());
    }

    std::optional<Entry> takeFromArray(const K& key) {
        Entry* entry = findEntry(key);
        if (entry == nullptr) {
            return std::nullopt;
        }
        std::optional<Entry> taken(std::move(*entry));
        std::destroy_at(entry);
        Entry* const end = array() + count();
        for (Entry* from = entry + 1; from != end; ++from) {
            relocate(from, from - 1);
        }
        --block_->count;
        if (block_->count == 0) {
            release(std::exchange(block_, nullptr));
        } else if (block_->count * 2 <= block_->capacity) {
            resizeArray(block_->capacity / 2);
        }
        return taken;
    }

    Block* block_ = nullptr;
};

} // namespace Orb
