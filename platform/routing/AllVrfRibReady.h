#pragma once

#include "platform/orb/attribute/Declare.h"
#include "platform/vrf/VrfName.h"

namespace Routing::Rib {

/// The VRFs whose protocols the routing information base waits for before it declares them ready.
class AllVrfRibReady : public Orb::Entity {
    ORB_ENTITY(AllVrfRibReady, "Routing::Rib::AllVrfRibReady")
    ORB_MAP(258, L3::VrfName, bool, vrf)
};

} // namespace Routing::Rib
