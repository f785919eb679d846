#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <directnet/tables.hpp>

#include "agent/topics/LeakRow.h"
#include "agent/topics/StateRows.h"

namespace Agent {

// The rows of what an agent shows, made from the tables that it shares.

/// One via: an interface as the next hop.
struct ViaRow {
    std::string vrf; // its id where it has no name
    std::string family;
    std::string intf;
    std::uint64_t via = 0;              // its id
    std::vector<std::string> viaSets{}; // the kinds of the via sets that it is in

    static void describe(auto& row, auto&& column) {
        column({"vrf", "VRF"}, row.vrf);
        column({"family", "FAMILY"}, row.family);
        column({"intf", "INTERFACE"}, row.intf);
        column({"via", "VIA"}, row.via);
        column({"viaSets", "VIA SETS"}, row.viaSets);
    }
};

Lanx::IpGenPrefix prefixOf(const directnet_prefix& prefix);

RouteRow routeRow(const directnet::Tables& tables, const directnet_route& route);

/// The vias by VRF, family and interface, of one VRF or of DIRECTNET_ALL_VRFS.
std::vector<ViaRow> viaRows(const directnet::Tables& tables, std::uint32_t vrf);

/// The leaks by VRF, prefix and destination, out of one VRF or of DIRECTNET_ALL_VRFS.
std::vector<LeakRow> leakRows(const directnet::Tables& tables, std::uint32_t vrf);

/// The time of the clock of the agent that writes the tables, by the time of day since it came; of
/// one that is gone, when it was there last. 0 where there has been none.
ClockTime clockTime(const directnet::Tables& tables);

/// Hands the state in the tables to the sink: of one VRF or all, by name, with their routes or
/// without.
void printTables(StateSink& sink, const directnet::Tables& tables,
                 const std::optional<directnet_vrf>& vrf, bool withRoutes);

} // namespace Agent
