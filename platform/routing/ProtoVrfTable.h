#pragma once

#include <cstdint>
#include <optional>

#include "platform/memtab/TableEntity.h"
#include "platform/orb/attribute/Declare.h"
#include "platform/routing/RecordForms.h"

namespace Routing::Rib {

/// The VRFs that one protocol has routes of, by id: what a reader of its tables needs to make sense
/// of them.
class ProtoVrfTable : public OrbMemtab::TableEntity<OrbMemtab::FlatTable<ProtoVrfForm>> {
    ORB_ENTITY(ProtoVrfTable, "Routing::Rib::ProtoVrfTable")

  public:
    static constexpr Orb::AttributeId vrfAttribute = Orb::firstAttributeId;
    using Vrfs = OrbMemtab::Records<ProtoVrfForm>;

    ProtoVrfTable() : TableEntity("vrf", ringEntries) {}

    std::optional<ProtoVrf> vrf(Vrf::VrfIdMap::VrfId id) const { return table_.find(id); }
    const Vrfs& vrfs() const { return table_.records(); }

    /// Adds or replaces. Throws RangeError when the table is full.
    void vrfIs(const ProtoVrf& vrf);
    void vrfDel(Vrf::VrfIdMap::VrfId id);

  private:
    void memberIs(const ProtoVrf& value) override { vrfIs(value); }
    void memberDel(const Vrf::VrfIdMap::VrfId& key) override { vrfDel(key); }

    static constexpr std::uint32_t ringEntries = 1U << 8;
};

} // namespace Routing::Rib
