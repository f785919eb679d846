#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

#include "platform/orb/container/OrderedMap.h"

namespace Orb {

/// A map in key order for where there are many maps and nearly all hold one entry: that one lies in
/// the map itself, without any memory of its own. Two or more are in an OrderedMap.
///
/// What OrderedMap asks of entries and keys, and what it says of exceptions, of destructors and of
/// the validity of entries, holds here too; keys also need ==.
///
/// Thread rule: one agent thread, no locks.
template <typename K, typename V>
class SoleMap {
    using Many = OrderedMap<K, V>;

  public:
    using Entry = typename Many::Entry;
    using iterator = typename Many::iterator;
    using const_iterator = typename Many::const_iterator;

    SoleMap() {} // NOLINT(modernize-use-equals-default): the union would have it deleted
    SoleMap(SoleMap&& other) noexcept { moveFrom(other); }
    SoleMap(const SoleMap& other)
        requires std::is_copy_constructible_v<Entry>
    {
        if (other.holds_ == Holds::one) {
            std::construct_at(&sole_, other.sole_);
        } else if (other.holds_ == Holds::many) {
            std::construct_at(&many_, other.many_);
        }
        holds_ = other.holds_;
    }
    SoleMap& operator=(SoleMap other) noexcept {
        swap(other);
        return *this;
    }
    ~SoleMap() {
        while (!empty()) {
            clear();
        }
    }

    void swap(SoleMap& other) noexcept {
        SoleMap mine(std::move(*this));
        moveFrom(other);
        other.moveFrom(mine);
    }

    std::size_t size() const {
        return holds_ == Holds::many ? many_.size() : static_cast<std::size_t>(holds_);
    }
    bool empty() const { return holds_ == Holds::none; }

    iterator begin() { return holds_ == Holds::many ? many_.begin() : iterator(&sole_); }
    iterator end() { return holds_ == Holds::many ? many_.end() : iterator(&sole_ + size()); }
    const_iterator begin() const {
        return holds_ == Holds::many ? many().begin() : const_iterator(&sole_);
    }
    const_iterator end() const {
        return holds_ == Holds::many ? many().end() : const_iterator(&sole_ + size());
    }

    /// The value of that key, or null. Valid until the next insertion or erasure.
    V* find(const K& key) { return const_cast<V*>(std::as_const(*this).find(key)); }
    const V* find(const K& key) const {
        if (holds_ == Holds::many) {
            return many_.find(key);
        }
        return holds_ == Holds::one && sole_.key() == key ? &sole_.value() : nullptr;
    }
    bool contains(const K& key) const { return find(key) != nullptr; }

    /// Walking by position, see OrderedMap.
    const Entry* first() const {
        return holds_ == Holds::many ? many_.first() : soleIf(holds_ == Holds::one);
    }
    const Entry* after(const K& key) const {
        return holds_ == Holds::many ? many_.after(key)
                                     : soleIf(holds_ == Holds::one && key < sole_.key());
    }
    const Entry* atOrAfter(const K& key) const {
        return holds_ == Holds::many ? many_.atOrAfter(key)
                                     : soleIf(holds_ == Holds::one && !(sole_.key() < key));
    }

    /// Adds the pair unless the key is there. Returns the key's value and whether it was added.
    std::pair<V*, bool> tryInsert(K key, V value = V()) {
        if (holds_ == Holds::many) {
            return many_.tryInsert(std::move(key), std::move(value));
        }
        if (V* present = find(key)) {
            return {present, false};
        }
        return {insertNew(Entry(std::move(key), std::move(value))), true};
    }

    /// Adds the pair or replaces the key's value. Returns whether the key was added.
    bool insertOrAssign(K key, V value) {
        if (V* present = find(key)) {
            std::swap(*present, value); // the old value dies last: its destructor may use the map
            return false;
        }
        tryInsert(std::move(key), std::move(value));
        return true;
    }

    /// Takes the entry of that key out of the map.
    std::optional<Entry> take(const K& key) {
        if (holds_ == Holds::many) {
            std::optional<Entry> taken = many_.take(key);
            if (many_.size() == 1) {
                leaveOne();
            }
            return taken;
        }
        return contains(key) ? std::optional<Entry>(takeSole()) : std::nullopt;
    }

    /// Removes the entry of that key. Returns whether there was one.
    bool erase(const K& key) { return take(key).has_value(); }

    /// Removes all entries. Those that their destructors add stay.
    void clear() {
        if (holds_ == Holds::one) {
            static_cast<void>(takeSole());
        } else if (holds_ == Holds::many) {
            static_cast<void>(takeMany());
        }
    }

  private:
    enum class Holds : std::uint8_t { none, one, many };

    const Many& many() const { return many_; }
    const Entry* soleIf(bool isIt) const { return isIt ? &sole_ : nullptr; }

    Entry takeSole() noexcept {
        Entry taken(std::move(sole_));
        std::destroy_at(&sole_);
        holds_ = Holds::none;
        return taken;
    }
    Many takeMany() noexcept {
        Many taken(std::move(many_));
        std::destroy_at(&many_);
        holds_ = Holds::none;
        return taken;
    }

    /// To an empty map, from one that is empty afterwards.
    void moveFrom(SoleMap& other) noexcept {
        if (other.holds_ == Holds::one) {
            std::construct_at(&sole_, other.takeSole());
            holds_ = Holds::one;
        } else if (other.holds_ == Holds::many) {
            std::construct_at(&many_, other.takeMany());
            holds_ = Holds::many;
        }
    }

    V* insertNew(Entry entry) {
        if (holds_ == Holds::none) {
            std::construct_at(&sole_, std::move(entry));
            holds_ = Holds::one;
            return &sole_.value();
        }
        const K key = entry.key();
        Many both = entry.key() < sole_.key() ? Many(std::move(entry), std::move(sole_))
                                              : Many(std::move(sole_), std::move(entry));
        std::destroy_at(&sole_);
        std::construct_at(&many_, std::move(both));
        holds_ = Holds::many;
        return many_.find(key);
    }

    void leaveOne() noexcept {
        Many going = takeMany();
        std::construct_at(&sole_, std::move(*going.first()));
        holds_ = Holds::one;
    }

    union {
        Entry sole_;
        Many many_;
    };
    Holds holds_ = Holds::none; // last: what follows the map may lie in its padding
};

} // namespace Orb
