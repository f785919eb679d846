#pragma once

#include "directnet/ready/VrfReadyStatus.h"

namespace Routing::DirectNet {

/// The readiness of every VRF that has a container.
class AllVrfReadyStatus : public Orb::Entity {
    ORB_ENTITY(AllVrfReadyStatus, "Routing::DirectNet::AllVrfReadyStatus")
    ORB_NO_CONSTRUCTOR(AllVrfReadyStatus)
    ORB_CHILDREN(258, VrfReadyStatus, vrfReadyStatus)
};

} // namespace Routing::DirectNet
