#pragma once

#include <cstdint>

#include "platform/orb/attribute/Value.h"

namespace Routing {

/// How a route compares with others to the same prefix.
class MetricPref {
    ORB_VALUE(MetricPref, "Routing::MetricPref", (std::uint32_t, metric),
              (std::uint32_t, preference))
};

} // namespace Routing
