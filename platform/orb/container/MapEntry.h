#pragma once

#include <cstddef>
#include <tuple>
#include <utility>

namespace Orb {

/// One entry of a HashMap or an OrderedMap. The key is fixed while the entry is in the map; the
/// value may be changed in place. Reads as a pair: `for (auto& [key, value] : map)`.
template <typename K, typename V>
class MapEntry {
  public:
    MapEntry(K key, V value) : key_(std::move(key)), value_(std::move(value)) {}

    const K& key() const { return key_; }
    const V& value() const { return value_; }
    V& value() { return value_; }

    template <std::size_t I>
    const auto& get() const {
        static_assert(I < 2);
        if constexpr (I == 0) {
            return key_;
        } else {
            return value_;
        }
    }

    template <std::size_t I>
    auto& get() {
        static_assert(I < 2);
        if constexpr (I == 0) {
            return std::as_const(key_);
        } else {
            return value_;
        }
    }

  private:
    [[no_unique_address]] K key_; // a small value lies in its padding
    V value_;
};

} // namespace Orb

template <typename K, typename V>
struct std::tuple_size<Orb::MapEntry<K, V>> : std::integral_constant<std::size_t, 2> {};

template <typename K, typename V>
struct std::tuple_element<0, Orb::MapEntry<K, V>> {
    using type = const K;
};

template <typename K, typename V>
struct std::tuple_element<1, Orb::MapEntry<K, V>> {
    using type = V;
};
