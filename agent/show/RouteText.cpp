#include "agent/show/RouteText.h"

#include "agent/base/JsonString.h"

namespace Agent {

using Routing::Fib::RouteType;

std::string routeTypeText(RouteType type) {
    std::string text = std::to_string(static_cast<unsigned>(type));
    if (const std::string_view name = Routing::DirectNet::routeTypeName(type); !name.empty()) {
        text.append(" ").append(name);
    }
    return text;
}

TextTable routeTable(Lanx::AddressFamily af, bool anyLeaked) {
    return TextTable({af == Lanx::AddressFamily::ipv4 ? "IPv4 PREFIX" : "IPv6 PREFIX", "TYPE",
                      "INTERFACE", "VIA", anyLeaked ? "SOURCE VRF" : ""});
}

void appendRouteMembers(std::string& out, const Routing::Rib::Route& route,
                        const RouteLookup::Target& target) {
    out += "\"type\":";
    out += std::to_string(static_cast<unsigned>(route.routeType()));
    out += ",\"intf\":";
    if (target.intfId) {
        appendJsonString(out, target.intfId->name());
    } else {
        out += "null";
    }
    out += ",\"via\":";
    if (target.via.empty()) {
        out += "null";
    } else {
        appendJsonString(out, target.via);
    }
    if (target.leaked) {
        out += ",\"sourceVrf\":";
        if (target.sourceVrf != nullptr) {
            appendJsonString(out, target.sourceVrf->value());
        } else {
            out += "null";
        }
    }
}

} // namespace Agent
