#include "agent/topics/RouteWalk.h"

#include "directnet/root/RootSm.h"

namespace Agent {

std::optional<RouteWalk::Route> RouteWalk::nextRoute() {
    if (vrf() == nullptr) {
        return {};
    }
    for (;;) {
        const auto& config =
            ipv6_ ? view_.root.ipv6AllVrfRouteConfig() : view_.root.ipv4AllVrfRouteConfig();
        const auto* routes = config->routes(vrf()->vrfId());
        std::optional<Route> route;
        if (routes != nullptr) {
            route = last_ ? routes->after(*last_) : routes->first();
        }
        if (route) {
            last_ = route->key();
            return route;
        }
        if (ipv6_) {
            return {};
        }
        ipv6_ = true;
        last_.reset();
    }
}

bool RouteWalk::nextVrf() {
    ipv6_ = false;
    last_.reset();
    return vrfs_.advance();
}

} // namespace Agent
