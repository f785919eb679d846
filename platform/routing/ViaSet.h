#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/routing/ViaKey.h"
#include "platform/routing/ViaSetKey.h"

namespace Routing::Rib::Memtab {

/// The next hop of a route, several routes sharing one set.
class ViaSet {
  public:
    /// As many as a record of the shared table has room for.
    static constexpr std::size_t maxVias = 1;

    ViaSet() = default;
    explicit ViaSet(ViaSetKey key) : key_(key) {}

    ViaSetKey key() const { return key_; }

    /// The via; null where there is none.
    const ViaKey* via() const { return !viaKey_ ? nullptr : &viaKey_; }
    /// Sets the via at that index. Throws RangeError for an index of maxVias or more.
    void viaKeyIs(std::size_t index, const ViaKey& key);

    std::uint8_t flags() const { return flags_; }
    void flagsIs(std::uint8_t flags) { flags_ = flags; }

    /// 2 for IPv4, 4 for IPv6.
    std::uint8_t familyCode() const { return familyCode_; }
    void familyCodeIs(std::uint8_t code) { familyCode_ = code; }

    /// What the routes through it are for, as a number of which the tables know nothing; 0 is none.
    std::uint8_t kind() const { return kind_; }
    void kindIs(std::uint8_t kind) { kind_ = kind; }

    friend bool operator==(const ViaSet&, const ViaSet&) = default;

  private:
    ViaSetKey key_;
    ViaKey viaKey_;
    std::uint8_t flags_ = 0;
    std::uint8_t familyCode_ = 0;
    std::uint8_t kind_ = 0;
};

} // namespace Routing::Rib::Memtab
