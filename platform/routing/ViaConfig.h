#pragma once

#include <cstdint>

#include "platform/orb/attribute/Declare.h"
#include "platform/routing/PerVrfTable.h"
#include "platform/routing/RecordForms.h"

namespace Routing::Rib::Ip {

/// The vias that one protocol configures in one address family, of all VRFs. A via whose interface
/// has a name of more than 60 bytes is refused with RangeError.
class ViaConfig : public PerVrfTableEntity<ViaForm> {
    ORB_ENTITY(ViaConfig, "Routing::Rib::Ip::ViaConfig")
    /// The transport and the routing protocol that every via key of the table names.
    ORB_ATTRIBUTE(259, std::uint8_t, transport)
    ORB_ATTRIBUTE(260, std::uint8_t, rp)

  public:
    static constexpr Orb::AttributeId viaAttribute = Orb::firstAttributeId;

    ViaConfig() : PerVrfTableEntity("via", ringEntries) {}

    std::uint8_t routingProtocol() const { return rp(); }

    /// A via id that the table has not given out before.
    std::uint64_t newViaId() { return table_.newId(); }

    /// The via of that key, or the default via.
    Via via(const ViaKey& key) const { return table_.find(key).value_or(Via()); }

    /// Adds or replaces. Throws RangeError when the table is full.
    void viaIs(const Via& via);
    void viaDel(const ViaKey& key);
    void doDeleteViasForVrf(Vrf::VrfIdMap::VrfId vrfId);

  private:
    void memberIs(const Via& value) override { viaIs(value); }
    void memberDel(const ViaKey& key) override { viaDel(key); }

    static constexpr std::uint32_t ringEntries = 1U << 12;
};

} // namespace Routing::Rib::Ip
