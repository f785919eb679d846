#pragma once

#include <algorithm>
#include <cstdint>

#include "platform/orb/value/Hash.h"

namespace Orb {

/// Where a key belongs in a HashTable, whichever: the top 32 bits of its mixed hash. Whoever looks
/// one key up several times, or in several tables, hashes it once and passes its tag along.
class HashTag {
  public:
    /// No key has this tag, nor 0.
    static constexpr std::uint32_t end = 0xFFFFFFFF;

    template <typename Key>
    static HashTag of(const Key& key) {
        return HashTag(static_cast<std::uint32_t>(hashOf(key) >> 32));
    }

    HashTag() = default;
    explicit HashTag(std::uint32_t top) : value_(std::clamp(top, std::uint32_t{1}, end - 1)) {}

    std::uint32_t value() const { return value_; }

  private:
    std::uint32_t value_ = 1;
};

} // namespace Orb
