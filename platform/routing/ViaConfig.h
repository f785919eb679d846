#pragma once

#include <cstdint>

#include "platform/orb/attribute/Declare.h"
#include "platform/routing/PerVrfTable.h"
#include "platform/routing/Via.h"

namespace Routing::Rib::Ip {

/// The vias that one protocol configures in one address family, of all VRFs.
class ViaConfig : public OrbMemtab::Table {
    ORB_ENTITY(ViaConfig, "Routing::Rib::Ip::ViaConfig")
    /// The transport and the routing protocol that every via key of the table names.
    ORB_ATTRIBUTE(259, std::uint8_t, transport)
    ORB_ATTRIBUTE(260, std::uint8_t, rp)

  public:
    static constexpr Orb::AttributeId viaAttribute = Orb::firstAttributeId;

    std::uint8_t routingProtocol() const { return rp(); }

    /// A via id that the table has not given out before.
    std::uint64_t newViaId() { return ++lastViaId_; }

    /// The via of that key, or the default via.
    Via via(const ViaKey& key) const;
    std::size_t size() const { return table_.size(); }

    bool hasRoomFor(const ViaKey& key) const { return table_.hasRoomFor(key); }

    /// Adds or replaces. Throws RangeError when the table is full.
    void viaIs(const Via& via);
    void viaDel(const ViaKey& key);
    void doDeleteViasForVrf(Vrf::VrfIdMap::VrfId vrfId);

    void collectionCapacityIs(std::string_view collection, std::size_t capacity) override;

  private:
    PerVrfTable<Via> table_;
    std::uint64_t lastViaId_ = 0;
};

} // namespace Routing::Rib::Ip
