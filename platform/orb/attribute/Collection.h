#pragma once

#include <utility>

#include "platform/orb/attribute/Attribute.h"
#include "platform/orb/container/HashMap.h"
#include "platform/orb/container/OrderedMap.h"
#include "platform/orb/container/SoleMap.h"

namespace Orb {

/// Values by key, in a HashMap, an OrderedMap or a SoleMap. An absent key reads as the default
/// value.
template <typename MapType, typename KeyType, AttributeValue T>
class Collection {
  public:
    using Key = KeyType;
    using Value = T;
    using Map = MapType;

    const Map& all() const { return map_; }

    T find(const Key& key) const {
        const T* value = map_.find(key);
        return value == nullptr ? T{} : *value;
    }

    /// Stores the member and tells the owner's reactors, unless it is there with that value. The
    /// key's tag may follow, in a hash map.
    template <typename... Tag>
    void memberIs(const Entity& owner, AttributeId id, const Key& key, Read<T> value, Tag... tag) {
        const auto [member, added] = map_.tryInsert(key, value, tag...);
        if (!added) {
            if (*member == value) {
                return;
            }
            *member = value;
        }
        tell(owner, id, key);
    }

    /// Changes the member where it stands, from the default value if it is new, and tells.
    template <typename Change>
    void memberChange(const Entity& owner, AttributeId id, const Key& key, Change change) {
        change(*map_.tryInsert(key).first);
        tell(owner, id, key);
    }

    template <typename... Tag>
    void memberDel(const Entity& owner, AttributeId id, const Key& key, Tag... tag) {
        if (!owner.hasReactors()) {
            map_.erase(key, tag...);
            return;
        }
        const Key stable = key; // the caller's may stand in the map
        if (map_.erase(stable, tag...)) {
            owner.notify(id, &stable);
        }
    }

    void memberDelAll(const Entity& owner, AttributeId id) {
        if (!owner.hasReactors()) {
            map_.clear();
            return;
        }
        const Ptr<const PtrInterface> kept = keep(owner);
        while (!map_.empty()) {
            memberDel(owner, id, map_.first()->key());
        }
    }

    std::string text() const { return std::to_string(map_.size()) + " members"; }

  private:
    static void tell(const Entity& owner, AttributeId id, const Key& key) {
        if (owner.hasReactors()) {
            const Key stable = key; // the caller's may stand in what somebody changes now
            owner.notify(id, &stable);
        }
    }

    [[no_unique_address]] Map map_;
};

template <typename Key, typename T>
using HashCollection = Collection<HashMap<Key, T>, Key, T>;

template <typename Key, typename T>
using OrderedCollection = Collection<OrderedMap<Key, T>, Key, T>;

template <typename Key, typename T>
using SoleCollection = Collection<SoleMap<Key, T>, Key, T>;

} // namespace Orb
