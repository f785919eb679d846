#pragma once

#include "platform/lanx/IntfId.h"
#include "platform/lanx/IpGenAddrWithMask.h"
#include "platform/orb/attribute/Value.h"
#include "platform/routing/RouteType.h"
#include "platform/vrf/VrfId.h"

namespace Routing::DirectNet {

/// One contributor of a prefix: the address that yields it, on its interface. The order decides
/// which contributor's route wins: the smallest.
class IntfIdAndAddr {
    ORB_VALUE(IntfIdAndAddr, "Routing::DirectNet::IntfIdAndAddr", (Lanx::IntfId, intfId),
              (Lanx::IpGenAddrWithMask, addrWithMask),
              (Vrf::VrfIdMap::VrfId, sourceVrfId), // where a leaked route comes from
              (bool, isVirtual),                   // a virtual address
              (Routing::Fib::RouteType, routeType))
};

// Kept by the million.
static_assert(sizeof(IntfIdAndAddr) <= 40);

} // namespace Routing::DirectNet
