#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/routing/ViaKey.h"
#include "platform/routing/ViaSetKey.h"

namespace Routing::Rib::Memtab {

/// The next hops of a route, several routes sharing one set.
class ViaSet {
  public:
    ViaSet() = default;
    explicit ViaSet(ViaSetKey key) : key_(key) {}

    ViaSetKey key() const { return key_; }

    const std::vector<ViaKey>& viaKey() const { return viaKeys_; }
    /// Sets the via at that index; indexes are filled from 0 without gaps.
    void viaKeyIs(std::size_t index, const ViaKey& key);

    std::uint8_t flags() const { return flags_; }
    void flagsIs(std::uint8_t flags) { flags_ = flags; }

    /// 2 for IPv4, 4 for IPv6.
    std::uint8_t familyCode() const { return familyCode_; }
    void familyCodeIs(std::uint8_t code) { familyCode_ = code; }

    friend bool operator==(const ViaSet&, const ViaSet&) = default;

  private:
    ViaSetKey key_;
    std::vector<ViaKey> viaKeys_;
    std::uint8_t flags_ = 0;
    std::uint8_t familyCode_ = 0;
};

} // namespace Routing::Rib::Memtab
