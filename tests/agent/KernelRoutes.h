#pragma once

#include <map>
#include <set>
#include <string>

namespace TestSupport {

/// Prefixes and the interfaces that routes of them go through.
using RoutesByPrefix = std::map<std::string, std::set<std::string>>;

/// The connected routes of the kernel's own tables, main and local of both families, of the calling
/// thread's network namespace or a named one. Leaves out what the agent has no route for by design:
///  - what goes through a link that is not running, which the kernel keeps while only the carrier
///    is missing;
///  - link-local, anycast and multicast addresses, and the prefix route to the far end of an
///    address with a peer.
RoutesByPrefix kernelRoutes(const std::string& netns = {});

/// The same of a state document of the agent's, without what the kernel has no route for by design:
/// the network address of a subnet, type 3. (Of the loopback's subnet the kernel has a local route
/// where the agent has a connected one; here both are one prefix.)
RoutesByPrefix agentRoutes(const std::string& state, const std::string& vrf);

} // namespace TestSupport
