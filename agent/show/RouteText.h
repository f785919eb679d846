#pragma once

#include <string>

#include "agent/show/StateView.h"

namespace Agent {

/// The name of a route type for people, with its number: "11 connected".
std::string routeTypeText(Routing::Fib::RouteType type);

/// Appends what the state document says of a route, without braces:
/// "type":11,"intf":"Ethernet1","via":"connected".
void appendRouteMembers(std::string& out, const Routing::Rib::Route& route,
                        const StateView::Target& target);

} // namespace Agent
