#include "agent/tables/TableRows.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <tuple>

#include "tables/layout/WallTime.h"

namespace Agent {

namespace {

/// A clock of an agent shows this when the agent begins.
constexpr double clockStart = 1;

std::string nameOf(const directnet::Tables& tables, std::uint32_t vrf) {
    const auto found = tables.vrf(vrf);
    return found ? found->name : std::to_string(vrf);
}

std::string kindName(std::uint8_t kind) {
    return directnet_tables_via_kind_name(static_cast<directnet_via_kind>(kind));
}

std::string_view familyName(std::uint8_t family) {
    return Lanx::familyName(Lanx::AddressFamily{family});
}

struct RouteCounts {
    std::size_t ipv4 = 0;
    std::size_t ipv6 = 0;
};

std::map<std::uint32_t, RouteCounts> countRoutes(const directnet::Tables& tables) {
    std::map<std::uint32_t, RouteCounts> counts;
    tables.eachRoute([&](const directnet_route& route) {
        RouteCounts& count = counts[route.vrf_id];
        ++(route.prefix.family == DIRECTNET_IPV4 ? count.ipv4 : count.ipv6);
    });
    return counts;
}

VrfRow vrfRow(const directnet_vrf& vrf, const RouteCounts& routes) {
    VrfRow row;
    row.vrf = vrf.name;
    row.id = vrf.id;
    row.ready = {vrf.ipv4_ready != 0, vrf.ipv6_ready != 0};
    if (vrf.has_rib != 0) {
        row.rib = RibWait{vrf.rib_ready != 0, {vrf.ready_time}};
    }
    row.ipv4Routes = routes.ipv4;
    row.ipv6Routes = routes.ipv6;
    return row;
}

} // namespace

Lanx::IpGenPrefix prefixOf(const directnet_prefix& prefix) {
    Lanx::AddressBytes bytes{};
    std::memcpy(bytes.data(), prefix.address, bytes.size());
    if (prefix.family == DIRECTNET_IPV4) {
        return {Lanx::IpAddr(bytes), prefix.length};
    }
    return {Lanx::Ip6Addr(bytes), prefix.length};
}

RouteRow routeRow(const directnet::Tables& tables, const directnet_route& route) {
    RouteRow row{
        prefixOf(route.prefix), static_cast<Routing::Fib::RouteType>(route.type), {}, {}, {}};
    if (const auto hop = tables.resolve(route)) {
        row.intf = Lanx::IntfId(hop->interface_name);
        row.via.name = directnet_tables_via_kind_name(hop->kind);
    }
    if (route.source_vrf_id != DIRECTNET_NO_VRF) {
        const auto source = tables.vrf(route.source_vrf_id);
        row.sourceVrf = NameOrNull{source ? source->name : std::string()};
    }
    return row;
}

std::vector<ViaRow> viaRows(const directnet::Tables& tables, std::uint32_t vrf) {
    using Key = std::tuple<std::uint32_t, std::uint64_t, std::uint8_t, std::uint8_t>;
    std::map<Key, std::vector<std::string>> sets;
    tables.eachViaSet(
        [&](const directnet_via_set& set) {
            sets[{set.vrf_id, set.via_id, set.transport, set.routing_protocol}].push_back(
                kindName(set.kind));
        },
        vrf);
    std::vector<ViaRow> rows;
    tables.eachVia(
        [&](const directnet_via& via) {
            auto& kinds = sets[{via.vrf_id, via.via_id, via.transport, via.routing_protocol}];
            std::ranges::sort(kinds);
            rows.push_back({nameOf(tables, via.vrf_id), std::string(familyName(via.family)),
                            via.interface_name, via.via_id, std::move(kinds)});
        },
        vrf);
    std::ranges::sort(rows, {}, [](const ViaRow& row) {
        return std::tie(row.vrf, row.family, row.intf, row.via);
    });
    return rows;
}

std::vector<LeakRow> leakRows(const directnet::Tables& tables, std::uint32_t vrf) {
    std::vector<LeakRow> rows;
    tables.eachLeak(
        [&](const directnet_leak& leak) {
            rows.push_back({nameOf(tables, leak.source_vrf_id), prefixOf(leak.prefix),
                            nameOf(tables, leak.dest_vrf_id)});
        },
        vrf);
    std::ranges::sort(rows, {},
                      [](const LeakRow& row) { return std::tie(row.vrf, row.prefix, row.to); });
    return rows;
}

ClockTime clockTime(const directnet::Tables& tables) {
    const directnet_writer writer = tables.writer();
    if (writer.present == 0) {
        return {};
    }
    const std::uint64_t now = writer.lives != 0 ? Tables::wallTime() : writer.absent_since;
    return {clockStart + (static_cast<double>(now) - static_cast<double>(writer.opened_at)) / 1e9};
}

void printTables(StateSink& sink, const directnet::Tables& tables,
                 const std::optional<directnet_vrf>& vrf, bool withRoutes) {
    auto vrfs = vrf ? std::vector{*vrf} : tables.vrfs();
    std::ranges::sort(vrfs, {},
                      [](const directnet_vrf& one) { return std::string_view(one.name); });
    auto counts = countRoutes(tables);
    sink.time({clockTime(tables), {}});
    for (const directnet_vrf& one : vrfs) {
        sink.vrf(vrfRow(one, counts[one.id]));
        if (withRoutes) {
            tables.eachRoute(
                [&](const directnet_route& route) { sink.route(routeRow(tables, route)); }, one.id);
        }
    }
    const directnet_sizes sizes = tables.sizes();
    sink.totals({sizes.ipv4_vias, sizes.ipv6_vias, sizes.ipv4_via_sets + sizes.ipv6_via_sets});
}

} // namespace Agent
