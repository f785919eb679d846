#pragma once

#include <optional>

#include "platform/vrf/VrfId.h"
#include "platform/vrf/VrfName.h"

namespace Routing::Rib {

/// What a protocol says of one VRF to whoever reads its tables.
struct ProtoVrf {
    /// The protocol's word to the routing information base, while that waits for the VRF.
    struct Rib {
        bool ready = false;
        double readyTime = 0; ///< seconds of the writer's clock; 0 while it never was
        friend bool operator==(const Rib&, const Rib&) = default;
    };

    L3::VrfName name;
    Vrf::VrfIdMap::VrfId id;
    bool ipv4Ready = false; ///< whether the family's routes are complete
    bool ipv6Ready = false;
    std::optional<Rib> rib;

    friend bool operator==(const ProtoVrf&, const ProtoVrf&) = default;
};

} // namespace Routing::Rib
