#pragma once

#include <utility>

#include "directnet/model/Units.h"
#include "platform/orb/attribute/Declare.h"
#include "platform/vrf/VrfName.h"

namespace Routing::DirectNet {

/// Whether all connected routes of a VRF have been written, per address family. A flag that is set
/// stays set for as long as the VRF exists.
class VrfReadyStatus : public Orb::Entity {
    ORB_ENTITY(VrfReadyStatus, "Routing::DirectNet::VrfReadyStatus")
    ORB_CONSTRUCTOR((L3::VrfName, vrfName))
    ORB_KEY(L3::VrfName, vrfName)
    ORB_ATTRIBUTE(259, bool, v4DirectNetsReady)
    ORB_ATTRIBUTE(260, bool, v6DirectNetsReady)

  public:
    explicit VrfReadyStatus(Arguments arguments) : arguments_(std::move(arguments)) {}
};

} // namespace Routing::DirectNet
