#pragma once

#include <cstdint>

#include "platform/lanx/IntfId.h"

namespace Agent::Linux {

/// A link that is a VRF. A device that is renamed, or made again, is another one.
struct VrfDevice {
    int index = 0;
    Lanx::IntfId name;
    std::uint32_t table = 0; ///< the routing table of its routes, never 0

    friend bool operator==(const VrfDevice&, const VrfDevice&) = default;
};

} // namespace Agent::Linux
