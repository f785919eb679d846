#include "agent/install/RouteUse.h"

#include "agent/device/DeviceInputs.h"
#include "agent/topics/RouteLookup.h"
#include "directnet/root/RootSm.h"

namespace Agent {

namespace {

using Lanx::AddressFamily;
using Routing::DirectNet::IntfIdAndAddr;
using Routing::DirectNet::IntfIdSet;
using Routing::Fib::RouteType;
using Vrf::VrfIdMap::VrfId;

/// Where the addresses of an interface come from that yield routes like the one in question.
struct Origins {
    bool isOwn = false;
    bool isVirtual = false;
};

bool isLike(RouteType type, RouteType route) {
    const auto isAddress = [](RouteType t) {
        return t == RouteType::receive || t == RouteType::attachedHost;
    };
    return type == route || (isAddress(type) && isAddress(route));
}

Origins originsOf(const AgentView& view, VrfId vrf, const Lanx::IpGenPrefix& prefix,
                  Lanx::IntfId interface, RouteType type) {
    Origins origins;
    const auto* backlog = view.root.intfBacklogByVrf()->intfBacklog(vrf);
    const IntfIdSet* set = backlog == nullptr ? nullptr : backlog->intfIdsByPrefix(prefix);
    if (set == nullptr) {
        return origins;
    }
    for (const auto& [contributor, viaSet] : set->intfIdAndAddr()) {
        if (contributor.intfId() == interface && contributor.sourceVrfId() == VrfId::invalid()
            && isLike(contributor.routeType(), type)) {
            (contributor.isVirtual() ? origins.isVirtual : origins.isOwn) = true;
        }
    }
    return origins;
}

} // namespace

RouteUse useOf(const AgentView& view, const Routing::Rib::RouteKey& key) {
    const bool isIpv4 = key.prefix().af() == AddressFamily::ipv4;
    const auto& routes =
        isIpv4 ? view.root.ipv4AllVrfRouteConfig() : view.root.ipv6AllVrfRouteConfig();
    const Routing::Rib::Route route = routes->route(key);
    const RouteType type = route.routeType();
    if (!route || (type != RouteType::receive && type != RouteType::connected)) {
        return {};
    }
    const Lanx::IntfId interface = RouteLookup(view).row(route).intf;
    if (!interface) {
        return {};
    }
    if (route.srcVrfId() != VrfId::invalid()) {
        const L3::VrfName* source = view.inputs.vrfs().name(route.srcVrfId());
        const Origins origins =
            originsOf(view, route.srcVrfId(), key.prefix(), interface, RouteType::receive);
        return {RouteUse::Kind::leaked, interface, source == nullptr ? L3::VrfName() : *source,
                origins.isVirtual && !origins.isOwn};
    }
    const Origins origins = originsOf(view, key.vrfId(), key.prefix(), interface, type);
    if (origins.isOwn || !origins.isVirtual || (type == RouteType::connected && !isIpv4)) {
        return {};
    }
    return {type == RouteType::connected ? RouteUse::Kind::virtualSubnet
                                         : RouteUse::Kind::virtualAddress,
            interface,
            {},
            false};
}

} // namespace Agent
