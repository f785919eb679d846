#pragma once

#include <utility>

#include "platform/orb/container/HashTable.h"
#include "platform/orb/container/MapEntry.h"

namespace Orb {

template <typename K, typename V>
struct MapEntryKey {
    const K& operator()(const MapEntry<K, V>& entry) const { return entry.key(); }
};

/// A map of keys to values that is walked in hash order, see HashTable. Keys need ==, <, and
/// Orb::hashOf.
template <typename K, typename V>
class HashMap : public HashTable<MapEntry<K, V>, MapEntryKey<K, V>> {
  public:
    using Entry = MapEntry<K, V>;

    /// The value of that key, or null. Valid until the next insertion or erasure.
    V* find(const K& key) { return valueOf(this->findEntry(key)); }
    const V* find(const K& key) const { return valueOf(this->findEntry(key)); }
    V* find(const K& key, HashTag tag) { return valueOf(this->findEntry(key, tag)); }
    const V* find(const K& key, HashTag tag) const { return valueOf(this->findEntry(key, tag)); }

    /// Adds the pair unless the key is there. Returns the key's value and whether it was added.
    std::pair<V*, bool> tryInsert(K key, V value = V()) {
        const auto tag = HashTag::of(key);
        return tryInsert(std::move(key), std::move(value), tag);
    }
    std::pair<V*, bool> tryInsert(K key, V value, HashTag tag) {
        const auto place = this->placeOf(key, tag);
        if (V* present = valueOf(this->entryAt(place, key))) {
            return {present, false};
        }
        return {&this->insertNew(Entry(std::move(key), std::move(value)), place)->value(), true};
    }

    /// Adds the pair or replaces the key's value. Returns whether the key was added.
    bool insertOrAssign(K key, V value) {
        const auto place = this->placeOf(key);
        if (V* present = valueOf(this->entryAt(place, key))) {
            std::swap(*present, value); // the old value dies last: its destructor may use the map
            return false;
        }
        this->insertNew(Entry(std::move(key), std::move(value)), place);
        return true;
    }

  private:
    template <typename E>
    static auto valueOf(E* entry) -> decltype(&entry->value()) {
        return entry == nullptr ? nullptr : &entry->value();
    }
};

} // namespace Orb
