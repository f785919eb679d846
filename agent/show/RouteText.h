#pragma once

#include <string>

#include "agent/base/TextTable.h"
#include "agent/show/RouteLookup.h"

namespace Agent {

/// The name of a route type for people, with its number: "11 connected".
std::string routeTypeText(Routing::Fib::RouteType type);

/// A table of routes of one family, the last column only where some are leaked.
TextTable routeTable(Lanx::AddressFamily af, bool anyLeaked);

/// Appends what the state document says of a route, without braces:
/// "type":11,"intf":"Ethernet1","via":"connected".
void appendRouteMembers(std::string& out, const Routing::Rib::Route& route,
                        const RouteLookup::Target& target);

} // namespace Agent
