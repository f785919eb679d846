#pragma once

#include <utility>

#include "platform/orb/container/HashTable.h"

namespace Orb {

/// A map of elements that hold their own key, walked in hash order, see HashTable.
/// `KeyOf()(element)` returns a reference to the key, which must not change while the element is in
/// the map; pointers to owned children are the usual elements.
template <typename T, typename KeyOf>
class HashMap2018 : public HashTable<T, KeyOf> {
  public:
    using Entry = T;
    using Key = typename HashTable<T, KeyOf>::Key;

    /// The element of that key, or null. Valid until the next insertion or erasure.
    T* find(const Key& key) { return this->findEntry(key); }
    const T* find(const Key& key) const { return this->findEntry(key); }
    T* find(const Key& key, HashTag tag) { return this->findEntry(key, tag); }
    const T* find(const Key& key, HashTag tag) const { return this->findEntry(key, tag); }

    /// Adds the element unless its key is there. Returns the key's element and whether it was
    /// added.
    std::pair<T*, bool> tryInsert(T element) {
        const auto place = this->placeOf(this->keyOf_(element));
        if (T* present = this->entryAt(place, this->keyOf_(element))) {
            return {present, false};
        }
        return {this->insertNew(std::move(element), place), true};
    }

    /// The element of that key, with `make()` added if there is none, which must not use the map.
    /// And whether it was added.
    template <typename Make>
    std::pair<T*, bool> findOrInsert(const Key& key, HashTag tag, const Make& make) {
        const auto place = this->placeOf(key, tag);
        if (T* present = this->entryAt(place, key)) {
            return {present, false};
        }
        return {this->insertNew(make(), place), true};
    }

    /// Adds the element or replaces the one of the same key. Returns whether the key was added.
    bool insertOrAssign(T element) {
        const auto place = this->placeOf(this->keyOf_(element));
        if (T* present = this->entryAt(place, this->keyOf_(element))) {
            std::swap(*present, element); // the old one dies last: its destructor may use the map
            return false;
        }
        this->insertNew(std::move(element), place);
        return true;
    }
};

} // namespace Orb
