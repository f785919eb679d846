#pragma once

#include "platform/lanx/IpGenPrefix.h"
#include "platform/orb/attribute/Value.h"
#include "platform/vrf/VrfId.h"

namespace Routing {

/// A connected prefix of one VRF that is leaked into another.
class LeakedRoute {
    ORB_VALUE(LeakedRoute, "Routing::LeakedRoute", (Vrf::VrfIdMap::VrfId, sourceVrfId),
              (Lanx::IpGenPrefix, genPrefix), (Vrf::VrfIdMap::VrfId, destVrfId))
    /// The VRF that tables keep it by.
    Vrf::VrfIdMap::VrfId vrfId() const { return sourceVrfId(); }
};

} // namespace Routing
