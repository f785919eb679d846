#pragma once

#include <utility>

#include "platform/orb/attribute/Declare.h"
#include "platform/orb/value/Name.h"

namespace Routing::Rib {

/// One protocol's word to the routing information base about one VRF, whose name it bears.
class ProtoVrfStatus : public Orb::Entity {
    ORB_ENTITY(ProtoVrfStatus, "Routing::Rib::ProtoVrfStatus")
    ORB_ATTRIBUTE(259, bool, ready)
    /// When the protocol became ready, in seconds of the agent's clock; 0 while it never was.
    ORB_ATTRIBUTE(260, double, readyTime)

  public:
    explicit ProtoVrfStatus(Orb::Name name) : name_(std::move(name)) {}

    const Orb::Name& name() const { return name_; }

  private:
    const Orb::Name name_;
};

} // namespace Routing::Rib
