#pragma once

#include "platform/orb/attribute/Declare.h"
#include "platform/routing/ViaSet.h"

namespace Routing::Rib::Memtab {

/// Via sets by key.
class ViaSetCollection : public Orb::Entity {
    ORB_ENTITY(ViaSetCollection, "Routing::Rib::Memtab::ViaSetCollection")

  public:
    static constexpr Orb::AttributeId viaSetAttribute = Orb::firstAttributeId;

    /// The via set, or null. Valid until the next change.
    const ViaSet* viaSet(ViaSetKey key) const { return sets_.find(key); }
    std::size_t size() const { return sets_.size(); }

    void viaSetIs(const ViaSet& viaSet);
    void viaSetDel(ViaSetKey key);
    void viaSetDelAll();

  private:
    struct KeyOf {
        ViaSetKey operator()(const ViaSet& viaSet) const { return viaSet.key(); }
    };

    Orb::HashMap2018<ViaSet, KeyOf> sets_;
};

} // namespace Routing::Rib::Memtab
