#pragma once

#include <cstdint>
#include <optional>

#include "platform/memtab/TableEntity.h"
#include "platform/orb/attribute/Declare.h"
#include "platform/routing/RecordForms.h"

namespace Routing::Rib::Memtab {

/// Via sets by key.
class ViaSetCollection : public OrbMemtab::TableEntity<OrbMemtab::FlatTable<ViaSetForm>> {
    ORB_ENTITY(ViaSetCollection, "Routing::Rib::Memtab::ViaSetCollection")

  public:
    static constexpr Orb::AttributeId viaSetAttribute = Orb::firstAttributeId;

    ViaSetCollection() : TableEntity("viaSet", ringEntries) {}

    /// A key that the table has not given out before.
    ViaSetKey newViaSetKey() { return ViaSetKey(table_.newId()); }

    std::optional<ViaSet> viaSet(ViaSetKey key) const { return table_.find(key); }

    /// Whether so many more via sets can come.
    bool hasRoom(std::size_t count) { return table_.hasRoom(count); }

    void viaSetIs(const ViaSet& viaSet);
    void viaSetDel(ViaSetKey key);
    void viaSetDelAll();

  private:
    void memberIs(const ViaSet& value) override { viaSetIs(value); }
    void memberDel(const ViaSetKey& key) override { viaSetDel(key); }

    static constexpr std::uint32_t ringEntries = 1U << 13;
};

} // namespace Routing::Rib::Memtab
