#include "agent/topics/RouteLookup.h"

#include "agent/device/DeviceInputs.h"
#include "directnet/root/RootSm.h"

namespace Agent {

using Lanx::AddressFamily;
using Routing::DirectNet::IntfViaSetKeyStatus;
using Routing::Rib::ViaSetKey;
using Vrf::VrfIdMap::VrfId;

namespace {

/// Which of the interface's via sets the key names; empty if none.
std::string_view nameAmong(const IntfViaSetKeyStatus& status, Lanx::IntfId intfId, ViaSetKey key) {
    return Routing::DirectNet::viaSetName(status.intfViaSetKey(intfId), key);
}

} // namespace

RouteRow RouteLookup::row(const Route& route) const {
    RouteRow row{route.key().prefix(), route.routeType(), {}, {}, {}};
    const auto* viaSet = view_.inputs.viaSetConfig()->viaSetCollection()->viaSet(route.viaSetKey());
    const auto& vias = row.prefix.af() == AddressFamily::ipv4 ? view_.root.ipv4AllVrfViaConfig()
                                                              : view_.root.ipv6AllVrfViaConfig();
    if (viaSet != nullptr && !viaSet->viaKey().empty()) {
        const Routing::Rib::Via via = vias->via(viaSet->viaKey().front());
        if (via != Routing::Rib::Via()) {
            row.intf = via.intfId();
            row.via.name = viaName(route, via.intfId());
        }
    }
    if (route.srcVrfId() != VrfId::invalid()) {
        const L3::VrfName* source = view_.inputs.vrfs().name(route.srcVrfId());
        row.sourceVrf = NameOrNull{source == nullptr ? std::string() : source->value()};
    }
    return row;
}

/// A leaked route goes through a via set of its source VRF.
std::string_view RouteLookup::viaName(const Route& route, Lanx::IntfId intfId) const {
    const bool leaked = route.srcVrfId() != VrfId::invalid();
    const L3::VrfName* vrf =
        view_.inputs.vrfs().name(leaked ? route.srcVrfId() : route.key().vrfId());
    const auto* container = vrf == nullptr ? nullptr : view_.root.containerSm(*vrf);
    if (container == nullptr) {
        return {};
    }
    const AddressFamily af = route.key().prefix().af();
    const std::string_view name = nameAmong(
        *container->intfBacklog()->intfViaSetKeyStatusFromAf(af), intfId, route.viaSetKey());
    if (!name.empty()) {
        return name;
    }
    const auto& virtualStatus = af == AddressFamily::ipv4
                                    ? container->vrfVirtualIpStatusSm()->ivskStatus()
                                    : container->vrfVirtualIp6StatusSm()->ivskStatus();
    return nameAmong(*virtualStatus, intfId, route.viaSetKey());
}

} // namespace Agent
