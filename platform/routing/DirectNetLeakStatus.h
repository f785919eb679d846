#pragma once

#include "platform/orb/attribute/Declare.h"
#include "platform/routing/RouteLeakedFromVrf.h"

namespace Routing {

/// The connected prefixes of one address family that are leaked between VRFs, by source VRF.
class DirectNetLeakStatus : public Orb::Entity {
    ORB_ENTITY(DirectNetLeakStatus, "Routing::DirectNetLeakStatus")
    ORB_CHILDREN(258, RouteLeakedFromVrf, leakedRouteBySourceVrf)
};

} // namespace Routing
