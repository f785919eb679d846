#pragma once

#include <vector>

#include "directnet/backlog/IntfBacklog.h"
#include "directnet/backlog/IntfViaSetConfig.h"

/// The receive routes of leaked addresses. One is a contributor in the destination's prefix index
/// that names its source VRF. It goes through the receive via set of the address's interface in the
/// source, where the reference on it is counted: the contributor is in the index exactly while the
/// reference is held.
namespace Routing::DirectNet {

/// Whether the destination has the route of that address of the source.
bool hasLeakedRoute(const IntfBacklog& dest, Lanx::IntfId intfId,
                    const Lanx::IpGenAddrWithMask& addrWithMask, Vrf::VrfIdMap::VrfId sourceVrfId);

/// Adds a route that the destination does not have. The interface must have via sets in the source.
void addLeakedRoute(IntfBacklog& dest, Lanx::IntfId intfId,
                    const Lanx::IpGenAddrWithMask& addrWithMask, const IntfBacklog& source);

/// Removes a route that the destination has. With the last reference the via sets go, too.
void delLeakedRoute(IntfBacklog& dest, Lanx::IntfId intfId,
                    const Lanx::IpGenAddrWithMask& addrWithMask, const IntfBacklog& source,
                    IntfViaSetConfig& config);

/// All that is leaked into a VRF, from wherever.
std::vector<IntfIdAndAddr> leakedRoutes(const IntfBacklog& dest);

} // namespace Routing::DirectNet
