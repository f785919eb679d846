#pragma once

#include "platform/lanx/IntfId.h"
#include "platform/routing/ViaKey.h"

namespace Routing::Rib {

/// One next hop: here always an interface.
class Via {
  public:
    Via() = default;
    explicit Via(ViaKey key) : key_(key) {}

    const ViaKey& key() const { return key_; }
    Lanx::IntfId intfId() const { return intfId_; }
    void intfIdIs(Lanx::IntfId intfId) { intfId_ = intfId; }

    friend bool operator==(const Via&, const Via&) = default;

  private:
    ViaKey key_;
    Lanx::IntfId intfId_;
};

} // namespace Routing::Rib
