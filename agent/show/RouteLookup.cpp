#include "agent/show/RouteLookup.h"

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

RouteLookup::Target RouteLookup::target(const Route& route) const {
    Target target{};
    const auto* viaSet = inputs_.viaSetConfig()->viaSetCollection()->viaSet(route.viaSetKey());
    const auto& vias = route.key().prefix().af() == AddressFamily::ipv4
                           ? root_.ipv4AllVrfViaConfig()
                           : root_.ipv6AllVrfViaConfig();
    if (viaSet != nullptr && !viaSet->viaKey().empty()) {
        const Routing::Rib::Via via = vias->via(viaSet->viaKey().front());
        if (via != Routing::Rib::Via()) {
            target.intfId = via.intfId();
            target.via = viaName(route, via.intfId());
        }
    }
    if (route.srcVrfId() != VrfId::invalid()) {
        target.leaked = true;
        target.sourceVrf = inputs_.vrfs().name(route.srcVrfId());
    }
    return target;
}

/// A leaked route goes through a via set of its source VRF.
std::string_view RouteLookup::viaName(const Route& route, Lanx::IntfId intfId) const {
    const bool leaked = route.srcVrfId() != VrfId::invalid();
    const L3::VrfName* vrf = inputs_.vrfs().name(leaked ? route.srcVrfId() : route.key().vrfId());
    const auto* container = vrf == nullptr ? nullptr : root_.containerSm(*vrf);
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
