#pragma once

#include <utility>

#include "platform/orb/attribute/Declare.h"
#include "platform/routing/ViaSetCollection.h"

namespace Routing::Rib {

/// Gives out via-set keys and holds the via sets, of all VRFs and both families.
class ViaSetConfig : public Orb::Entity {
    ORB_ENTITY(ViaSetConfig, "Routing::Rib::ViaSetConfig")

  public:
    ViaSetConfig() : ViaSetConfig(Orb::makePtr<Memtab::ViaSetCollection>()) {}
    /// Keeps the via sets in that collection, such as one that is mounted.
    explicit ViaSetConfig(Orb::Ptr<Memtab::ViaSetCollection> collection)
        : collection_(std::move(collection)) {}

    /// A key that was not given out before.
    ViaSetKey newViaSetKey() { return collection_->newViaSetKey(); }

    const Orb::Ptr<Memtab::ViaSetCollection>& viaSetCollection() const { return collection_; }
    void viaSetDelAll() { collection_->viaSetDelAll(); }

  private:
    Orb::Ptr<Memtab::ViaSetCollection> collection_;
};

} // namespace Routing::Rib
