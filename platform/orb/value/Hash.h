#pragma once

#include <concepts>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>

namespace Orb {

/// A type that hashes itself: hash(seed) is fully mixed, equal values hash alike.
template <typename T>
concept HasHash = requires(const T& value, std::uint64_t seed) {
    { value.hash(seed) } -> std::same_as<std::uint64_t>;
};

template <typename T>
concept HashableNumber = std::integral<T> || std::is_enum_v<T>;

template <typename T>
concept Hashable = HashableNumber<T> || HasHash<T> || std::same_as<T, std::string>
                   || std::same_as<T, std::string_view>;

/// Mixes values into one 64-bit hash. The result depends on the values, their order and the seed
/// only, never on addresses or on the run; every input bit reaches every output bit, so that any
/// bits of the result can index a table.
///
/// Not a defence against keys that were chosen to collide.
class Hasher {
  public:
    explicit Hasher(std::uint64_t seed = 0) : state_(seed) {}

    void mix(std::uint64_t value) { state_ = fold(state_ ^ value ^ inputSalt, inputFactor); }

    /// Mixes the length too, so that "ab","c" and "a","bc" differ.
    void mix(std::string_view bytes) {
        mix(std::uint64_t{bytes.size()});
        for (; bytes.size() >= sizeof(std::uint64_t); bytes.remove_prefix(sizeof(std::uint64_t))) {
            mix(word(bytes.data(), sizeof(std::uint64_t)));
        }
        if (!bytes.empty()) {
            mix(word(bytes.data(), bytes.size()));
        }
    }

    /// Mixes a number, a string or a value that hashes itself.
    template <Hashable T>
    void mixValue(const T& value) {
        if constexpr (HasHash<T>) {
            state_ = value.hash(state_);
        } else if constexpr (HashableNumber<T>) {
            mix(static_cast<std::uint64_t>(value));
        } else {
            mix(std::string_view(value));
        }
    }

    std::uint64_t result() const { return fold(state_ ^ resultSalt, resultFactor); }

  private:
    __extension__ using Wide = unsigned __int128;

    // Odd constants without pattern (fractional digits of roots of small primes).
    static constexpr std::uint64_t inputSalt = 0x6a09e667f3bcc908;
    static constexpr std::uint64_t inputFactor = 0xbb67ae8584caa73b;
    static constexpr std::uint64_t resultSalt = 0x3c6ef372fe94f82b;
    static constexpr std::uint64_t resultFactor = 0xa54ff53a5f1d36f1;

    /// Both halves of the double-width product. The upper half brings the high bits down, the
    /// lower half carries the low bits up.
    static std::uint64_t fold(std::uint64_t value, std::uint64_t factor) {
        const Wide product = static_cast<Wide>(value) * factor;
        return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
    }

    static std::uint64_t word(const char* bytes, std::size_t count) {
        std::uint64_t value = 0;
        std::memcpy(&value, bytes, count);
        return value;
    }

    std::uint64_t state_;
};

/// The hash of a number, a string or a value that hashes itself. Fully mixed.
template <Hashable T>
std::uint64_t hashOf(const T& value, std::uint64_t seed = 0) {
    if constexpr (HasHash<T>) {
        return value.hash(seed);
    } else {
        Hasher hasher(seed);
        hasher.mixValue(value);
        return hasher.result();
    }
}

/// For the standard containers: std::unordered_map<Key, T, Orb::HashFunction<Key>>.
template <Hashable T>
struct HashFunction {
    std::size_t operator()(const T& value) const { return hashOf(value); }
};

} // namespace Orb
