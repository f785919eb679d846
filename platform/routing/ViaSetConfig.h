#pragma once

#include "platform/orb/attribute/Declare.h"
#include "platform/routing/ViaSetCollection.h"

namespace Routing::Rib {

/// Gives out via-set keys and holds the via sets, of all VRFs and both families.
class ViaSetConfig : public Orb::Entity {
    ORB_ENTITY(ViaSetConfig, "Routing::Rib::ViaSetConfig")

  public:
    ViaSetConfig() : collection_(Orb::makePtr<Memtab::ViaSetCollection>()) {}

    /// A key that was not given out before.
    ViaSetKey newViaSetKey() { return ViaSetKey(++lastKey_); }

    const Orb::Ptr<Memtab::ViaSetCollection>& viaSetCollection() const { return collection_; }
    void viaSetDelAll() { collection_->viaSetDelAll(); }

  private:
    Orb::Ptr<Memtab::ViaSetCollection> collection_;
    std::uint64_t lastKey_ = 0;
};

} // namespace Routing::Rib
