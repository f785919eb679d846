#pragma once

#include "platform/lanx/IpGenPrefix.h"
#include "platform/orb/attribute/Value.h"
#include "platform/vrf/VrfId.h"

namespace Routing {

/// A prefix and the VRF that it is leaked from.
class SourceVrfPrefix {
    ORB_VALUE(SourceVrfPrefix, "Routing::SourceVrfPrefix", (Vrf::VrfIdMap::VrfId, sourceVrfId),
              (Lanx::IpGenPrefix, genPrefix))
};

} // namespace Routing
