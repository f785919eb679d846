#pragma once

#include <string>

#include "agent/run/RouteFeed.h"
#include "agent/show/RouteLookup.h"

namespace Agent {

/// Appends a change of a route as one JSON object and a line end:
/// {"time":1.04,"change":"comes","vrf":"default","prefix":"10.1.1.0/24","type":11,...}, where what
/// follows the prefix is that of the state document. Changes are "comes", "changes" and "goes".
void appendChangeAsJson(std::string& out, double time, const RouteFeed::Change& change,
                        const RouteLookup& lookup);

/// Appends a change of a route as a line for people: "+", "~" or "-", VRF, prefix, and unless it
/// goes, its type, interface, via and, on a leaked route, source VRF.
void appendChangeAsText(std::string& out, const RouteFeed::Change& change,
                        const RouteLookup& lookup);

} // namespace Agent
