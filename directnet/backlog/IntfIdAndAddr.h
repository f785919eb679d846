#pragma once

#include "platform/lanx/IntfId.h"
#include "platform/lanx/IpGenAddrWithMask.h"
#include "platform/orb/attribute/Value.h"
#include "platform/routing/RouteType.h"
#include "platform/vrf/VrfId.h"

namespace Routing::DirectNet {

/// One contributor of a prefix: an address on an interface that yields a route of the prefix. The
/// smallest contributor's route is the one that is installed.
class IntfIdAndAddr {
    ORB_VALUE(IntfIdAndAddr, "Routing::DirectNet::IntfIdAndAddr", (Lanx::IntfId, intfId),
              (Lanx::IpGenAddrWithMask, addrWithMask),
              (Vrf::VrfIdMap::VrfId, sourceVrfId), // where a leaked route comes from
              (bool, isVirtual),                   // a virtual address
              (Routing::Fib::RouteType, routeType))
};

// There may be millions.
static_assert(sizeof(IntfIdAndAddr) <= 32);

} // namespace Routing::DirectNet
