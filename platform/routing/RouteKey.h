#pragma once

#include "platform/lanx/IpGenPrefix.h"
#include "platform/orb/attribute/Value.h"
#include "platform/vrf/VrfId.h"

namespace Routing::Rib {

/// Names a route: one per VRF and prefix.
class RouteKey {
    ORB_VALUE(RouteKey, "Routing::Rib::RouteKey", (Vrf::VrfIdMap::VrfId, vrfId),
              (Lanx::IpGenPrefix, prefix))
};

} // namespace Routing::Rib
