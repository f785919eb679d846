#pragma once

#include "directnet/model/Units.h"
#include "platform/orb/attribute/Declare.h"
#include "platform/vrf/VrfName.h"

namespace Routing::DirectNet {

/// A set of VRF names, such as those of the containers to delete.
class VrfNameSet : public Orb::Entity {
    ORB_ENTITY(VrfNameSet, "Routing::DirectNet::VrfNameSet")
    ORB_MAP(258, L3::VrfName, bool, vrfName)
};

} // namespace Routing::DirectNet
