#pragma once

#include <optional>
#include <string>

#include "agent/topics/ChangeKind.h"
#include "agent/topics/StateRows.h"

namespace Agent {

/// A route that comes, changes or goes, or is there when somebody begins to watch.
struct ChangeRow {
    std::optional<ClockTime> time; // of a change
    ChangeKind change = ChangeKind::is;
    std::string vrf;
    RouteRow route; // nothing but its prefix when it goes

    static void describe(auto& row, auto&& column) {
        column({"time", "TIME"}, row.time);
        column({"change", "CHANGE"}, row.change);
        column({"vrf", "VRF"}, row.vrf);
        RouteRow::describePrefix(row.route, column);
        if (row.change != ChangeKind::goes) {
            RouteRow::describeTarget(row.route, column);
        }
    }
};

/// Appends the change as a line for people: "+ default 10.1.1.0/24  11 connected  eth0  connected".
void appendChangeText(std::string& out, const ChangeRow& row, Colour colour);

} // namespace Agent
