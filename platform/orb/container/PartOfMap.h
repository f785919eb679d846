#pragma once

#include <cstddef>
#include <iterator>

#include "platform/orb/container/HashTag.h"

namespace Orb {

/// Those elements of a HashMap2018 to which a property applies, as a map of their own: one map can
/// so stand for several that have most keys in common. `Belongs()(element)` tells the property,
/// which whoever owns the map sets and clears; he also counts the elements that have it.
///
/// Walks are those of the map: in its order, resumed at a key after any change.
template <typename Map, typename Belongs>
class PartOfMap {
  public:
    using Entry = typename Map::Entry;
    using Key = typename Map::Key;

    class iterator {
      public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = Entry;
        using difference_type = std::ptrdiff_t;
        using pointer = const Entry*;
        using reference = const Entry&;

        iterator() = default;
        iterator(const PartOfMap* part, const Entry* at) : part_(part), at_(at) {}

        reference operator*() const { return *at_; }
        pointer operator->() const { return at_; }
        iterator& operator++() {
            at_ = part_->fromHere(part_->map_->next(at_));
            return *this;
        }
        iterator operator++(int) {
            iterator before = *this;
            ++*this;
            return before;
        }
        bool operator==(const iterator& other) const { return at_ == other.at_; }

      private:
        const PartOfMap* part_ = nullptr;
        const Entry* at_ = nullptr;
    };

    explicit PartOfMap(const Map& map) : map_(&map) {}
    PartOfMap(const PartOfMap&) = delete;
    PartOfMap& operator=(const PartOfMap&) = delete;

    std::size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }

    /// The element of that key, or null; with the key's tag, if that is at hand. Valid until the
    /// next insertion into the map or erasure.
    template <typename... Tag>
    const Entry* find(const Key& key, Tag... tag) const {
        const Entry* entry = map_->find(key, tag...);
        return entry != nullptr && Belongs()(*entry) ? entry : nullptr;
    }
    bool contains(const Key& key) const { return find(key) != nullptr; }

    /// Walking by position, see HashTable.
    const Entry* first() const { return fromHere(map_->first()); }
    const Entry* after(const Key& key) const { return fromHere(map_->after(key)); }
    const Entry* atOrAfter(const Key& key) const { return fromHere(map_->atOrAfter(key)); }

    iterator begin() const { return {this, first()}; }
    iterator end() const { return {this, nullptr}; }

    /// Fetches what a search for the key of that tag will read first.
    void prefetch(HashTag tag) const { map_->prefetch(tag); }

    // For the map's owner: an element has come to the part or left it.

    void oneMore() { ++size_; }
    void oneLess() { --size_; }
    void noneLeft() { size_ = 0; }

  private:
    const Entry* fromHere(const Entry* entry) const {
        while (entry != nullptr && !Belongs()(*entry)) {
            entry = map_->next(entry);
        }
        return entry;
    }

    const Map* map_;
    std::size_t size_ = 0;
};

} // namespace Orb
