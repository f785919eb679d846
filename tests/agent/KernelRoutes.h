#pragma once

#include <map>
#include <set>
#include <string>

namespace TestSupport {

/// Prefixes and the interfaces that routes of them go through.
using RoutesByPrefix = std::map<std::string, std::set<std::string>>;

/// The connected routes that the kernel made by itself, by VRF: of the calling thread's network
/// namespace or a named one the tables main and local of both families, as VRF `own`, and of each
/// VRF device its table. Leaves out what the agent has no route for by design:
///  - what goes through a link that is not running, which the kernel keeps while only the carrier
///    is missing;
///  - link-local, anycast and multicast addresses, and the prefix route to the far end of an
///    address with a peer.
std::map<std::string, RoutesByPrefix> kernelVrfs(const std::string& own,
                                                 const std::string& netns = {});

/// All routes that are under another protocol number, in the same way.
std::map<std::string, RoutesByPrefix> foreignRoutes(int protocol, const std::string& own,
                                                    const std::string& netns = {});

/// Those of the namespace itself.
RoutesByPrefix kernelRoutes(const std::string& netns = {});

/// The same of a state document of the agent's, without what the kernel has no route for by design:
/// the network address of a subnet, type 3. (Of the loopback's subnet the kernel has a local route
/// where the agent has a connected one; here both are one prefix.)
RoutesByPrefix agentRoutes(const std::string& state, const std::string& vrf);

/// Whether each of the kernel's prefixes goes through one of its links, and no others are there.
bool agree(const RoutesByPrefix& kernel, const RoutesByPrefix& agent);

} // namespace TestSupport
