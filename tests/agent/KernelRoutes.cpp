#include "tests/agent/KernelRoutes.h"

#include <nlohmann/json.hpp>

#include "tests/agent/Program.h"

namespace TestSupport {

namespace {

using nlohmann::json;

/// What the `ip` utility answers; an empty array if it has nothing to say.
json askIp(const std::string& netns, const std::string& question) {
    const std::string out =
        runShell("ip -j " + (netns.empty() ? "" : "-n " + netns + " ") + question).out;
    return out.empty() ? json::array() : json::parse(out);
}

std::set<std::string> runningLinks(const std::string& netns) {
    std::set<std::string> links;
    for (const json& link : askIp(netns, "link")) {
        const std::set<std::string> flags = link["flags"];
        if (flags.contains("UP") && !flags.contains("NO-CARRIER")) {
            links.insert(link["ifname"]);
        }
    }
    return links;
}

/// Whether the agent has a route like this one of the kernel's, whose link is running.
bool isConnected(const json& route, bool ipv4) {
    const std::string type = route.value("type", "unicast");
    const std::string prefix = route["dst"];
    const bool isFarEnd = ipv4 && type == "unicast" && prefix.find('/') == std::string::npos;
    return type != "anycast" && type != "multicast" && !isFarEnd && prefix.rfind("fe80:", 0) != 0;
}

} // namespace

RoutesByPrefix kernelRoutes(const std::string& netns) {
    const std::set<std::string> links = runningLinks(netns);
    RoutesByPrefix routes;
    for (const bool ipv4 : {true, false}) {
        for (const std::string table : {"main", "local"}) {
            for (const json& route :
                 askIp(netns, (ipv4 ? "-4 route show table " : "-6 route show table ") + table)) {
                if (!links.contains(route.value("dev", "")) || !isConnected(route, ipv4)) {
                    continue;
                }
                std::string prefix = route["dst"];
                if (prefix.find('/') == std::string::npos) {
                    prefix += ipv4 ? "/32" : "/128";
                }
                routes[prefix].insert(route["dev"]);
            }
        }
    }
    return routes;
}

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

} // namespace TestSupport
