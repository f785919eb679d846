#pragma once

#include <type_traits>
#include <vector>

namespace Orb {

/// The keys of a map, copied, for a walk during which the map may change in any way.
template <typename Map>
auto keysOf(const Map& map) {
    using Key = std::remove_cvref_t<decltype(map.first()->key())>;
    std::vector<Key> keys;
    keys.reserve(map.size());
    for (const auto& entry : map) {
        keys.push_back(entry.key());
    }
    return keys;
}

/// The objects that a collection holds, kept, for a walk during which it may change in any way.
template <typename Objects>
auto objectsOf(const Objects& objects) {
    std::vector<std::remove_cvref_t<decltype(*objects.first())>> kept;
    kept.reserve(objects.size());
    for (const auto& object : objects) {
        kept.push_back(object);
    }
    return kept;
}

/// Visits the keys of a map in its order. The walk holds on to keys, not to places: members may
/// come and go meanwhile, and those that were there throughout are visited once.
template <typename Map, typename Visit>
void forEachKey(const Map& map, Visit visit) {
    for (const auto* entry = map.first(); entry != nullptr;) {
        const auto key = entry->key();
        visit(key);
        entry = map.after(key);
    }
}

} // namespace Orb
