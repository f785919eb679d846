#include "agent/install/RouteUse.h"

#include <algorithm>

#include "agent/device/DeviceInputs.h"
#include "agent/topics/RouteLookup.h"
#include "directnet/root/RootSm.h"

namespace Agent {

namespace {

using Lanx::AddressFamily;
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

/// The contributors of a prefix; null if there are none.
const IntfIdSet* contributorsOf(const AgentView& view, VrfId vrf, const Lanx::IpGenPrefix& prefix) {
    const auto* backlog = view.root.intfBacklogByVrf()->intfBacklog(vrf);
    return backlog == nullptr ? nullptr : backlog->intfIdsByPrefix(prefix);
}

bool hasVirtual(const IntfIdSet* contributors) {
    if (contributors == nullptr) {
        return false;
    }
    const auto& all = contributors->intfIdAndAddr();
    return std::any_of(all.begin(), all.end(),
                       [](const auto& entry) { return entry.key().isVirtual(); });
}

Origins originsOf(const IntfIdSet* contributors, Lanx::IntfId interface, RouteType type) {
    Origins origins;
    if (contributors == nullptr) {
        return origins;
    }
    for (const auto& [contributor, viaSet] : contributors->intfIdAndAddr()) {
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
    const bool isLeaked = route.srcVrfId() != VrfId::invalid();
    const IntfIdSet* contributors =
        contributorsOf(view, isLeaked ? route.srcVrfId() : key.vrfId(), key.prefix());
    if (!isLeaked && !hasVirtual(contributors)) {
        return {}; // as most are
    }
    const Lanx::IntfId interface = RouteLookup(view).row(route).intf;
    if (!interface) {
        return {};
    }
    const Origins origins = originsOf(contributors, interface, type);
    const bool isVirtual = origins.isVirtual && !origins.isOwn;
    if (isLeaked) {
        const L3::VrfName* source = view.inputs.vrfs().name(route.srcVrfId());
        return {RouteUse::Kind::leaked, interface, source == nullptr ? L3::VrfName() : *source,
                isVirtual};
    }
    if (!isVirtual || (type == RouteType::connected && !isIpv4)) {
        return {};
    }
    return {type == RouteType::connected ? RouteUse::Kind::virtualSubnet
                                         : RouteUse::Kind::virtualAddress,
            interface,
            {},
            false};
}

} // namespace Agent
