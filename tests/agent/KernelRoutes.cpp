#include "tests/agent/KernelRoutes.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/agent/Program.h"

namespace TestSupport {

namespace {

using nlohmann::json;
using RoutesByVrf = std::map<std::string, RoutesByPrefix>;

/// The links and the routes of all tables and families. `ip` is asked once: it starts slowly where
/// a machine is emulated.
std::pair<json, json> linksAndRoutes(const std::string& netns) {
    const std::string in = netns.empty() ? "" : "-n " + netns + ' ';
    std::istringstream out(
        runShell("exec ip -j -d " + in + "-batch -", "link\nroute show table all").out);
    const auto next = [&] {
        std::string line;
        std::getline(out, line);
        return line.empty() ? json::array() : json::parse(line);
    };
    json links = next();
    return {std::move(links), next()};
}

bool isRunning(const json& link) {
    const std::set<std::string> flags = link["flags"];
    return flags.contains("UP") && !flags.contains("NO-CARRIER");
}

/// The VRF devices among the links, by table.
std::map<std::string, std::string> vrfDevices(const json& links) {
    const json::json_pointer kind("/linkinfo/info_kind");
    const json::json_pointer table("/linkinfo/info_data/table");
    std::map<std::string, std::string> devices;
    for (const json& link : links) {
        if (link.value(kind, "") == "vrf") {
            devices[std::to_string(link.value(table, 0))] = link["ifname"];
        }
    }
    return devices;
}

bool isIpv4(const std::string& prefix) { return prefix.find(':') == std::string::npos; }

/// Whether the agent has a route like this one of the kernel's, whose link is running.
bool isConnected(const json& route) {
    const std::string type = route.value("type", "unicast");
    const std::string prefix = route["dst"];
    const bool isFarEnd =
        isIpv4(prefix) && type == "unicast" && prefix.find('/') == std::string::npos;
    return route.value("protocol", "") == "kernel" && type != "anycast" && type != "multicast"
           && !isFarEnd && prefix.rfind("fe80:", 0) != 0;
}

/// The routes that count, by the VRF that has their table.
template <typename Counts>
RoutesByVrf byVrf(const std::string& own, const json& links, const json& routes, Counts counts) {
    std::map<std::string, std::string> tables = vrfDevices(links);
    RoutesByVrf vrfs{{own, {}}};
    for (const auto& [table, device] : tables) {
        vrfs[device];
    }
    tables["main"] = tables["local"] = own;
    for (const json& route : routes) {
        const auto vrf = tables.find(route.value("table", "main"));
        if (vrf == tables.end() || !counts(route)) {
            continue;
        }
        std::string prefix = route["dst"];
        if (prefix.find('/') == std::string::npos) {
            prefix += isIpv4(prefix) ? "/32" : "/128";
        }
        vrfs[vrf->second][prefix].insert(route.value("dev", ""));
    }
    return vrfs;
}

} // namespace

RoutesByVrf kernelVrfs(const std::string& own, const std::string& netns) {
    const auto [links, routes] = linksAndRoutes(netns);
    std::set<std::string> running;
    for (const json& link : links) {
        if (isRunning(link)) {
            running.insert(link["ifname"]);
        }
    }
    return byVrf(own, links, routes, [&](const json& route) {
        return running.contains(route.value("dev", "")) && isConnected(route);
    });
}

RoutesByVrf foreignRoutes(int protocol, const std::string& own, const std::string& netns) {
    const auto [links, routes] = linksAndRoutes(netns);
    return byVrf(own, links, routes, [number = std::to_string(protocol)](const json& route) {
        return route.value("protocol", "") == number;
    });
}

RoutesByPrefix kernelRoutes(const std::string& netns) { return kernelVrfs({}, netns)[{}]; }

RoutesByPrefix agentRoutes(const std::string& state, const std::string& vrf) {
    const json document = json::parse(state, nullptr, false);
    RoutesByPrefix routes;
    if (!document.is_object() || !document["vrfs"].contains(vrf)) {
        return routes;
    }
    for (const char* family : {"ipv4", "ipv6"}) {
        for (const auto& [prefix, route] : document["vrfs"][vrf][family].items()) {
            if (route["type"] != 3 && !route.contains("sourceVrf")) {
                routes[prefix].insert(route["intf"].is_string() ? std::string(route["intf"])
                                                                : "none");
            }
        }
    }
    return routes;
}

bool agree(const RoutesByPrefix& kernel, const RoutesByPrefix& agent) {
    return std::equal(kernel.begin(), kernel.end(), agent.begin(), agent.end(),
                      [](const auto& route, const auto& own) {
                          return route.first == own.first
                                 && route.second.contains(*own.second.begin());
                      });
}

} // namespace TestSupport
