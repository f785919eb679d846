#pragma once

#include "platform/orb/attribute/TypeRegistry.h"

namespace Routing::DirectNet {

/// The order in which the units of the library register their types. The platform's own come
/// before them, as unit 0.
enum Unit : int {
    unitDirectNet = 1,
    unitVrfVirtualIpStatus,
    unitVrfVirtualIpStatusSm,
    unitVirtualIpStatusSm,
    unitIntfBacklog,
    unitIntfBacklogSm,
    unitReceiveRouteLeakSm,
    unitRibReadySm,
};

/// How names of network namespaces that belong to a VRF begin by convention.
inline constexpr const char* netNsPrefix = "ns-";

} // namespace Routing::DirectNet
