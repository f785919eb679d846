#pragma once

#include "platform/orb/attribute/Declare.h"
#include "platform/routing/RouteLeakedFromVrf.h"

namespace Routing {

/// The agent's own copy of a DirectNetLeakStatus.
class DirectNetLeakLocalStatus : public Orb::Entity {
    ORB_ENTITY(DirectNetLeakLocalStatus, "Routing::DirectNetLeakLocalStatus")
    ORB_NO_CONSTRUCTOR(DirectNetLeakLocalStatus)
    ORB_CHILDREN(258, RouteLeakedFromVrf, leakedRouteBySourceVrf)
};

} // namespace Routing
