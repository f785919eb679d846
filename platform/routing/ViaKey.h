#pragma once

#include <cstdint>

#include "platform/orb/attribute/Value.h"
#include "platform/vrf/VrfId.h"

namespace Routing::Rib {

/// Names a via: who owns it (transport and routing protocol), its VRF and its id among those.
class ViaKey {
    ORB_VALUE(ViaKey, "Routing::Rib::ViaKey", (std::uint8_t, transport), (std::uint64_t, viaId),
              (Vrf::VrfIdMap::VrfId, vrfId), (std::uint8_t, routingProtocol))
};

} // namespace Routing::Rib
