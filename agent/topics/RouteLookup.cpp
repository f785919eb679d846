#include "agent/topics/RouteLookup.h"

#include "agent/device/DeviceInputs.h"
#include "directnet/root/RootSm.h"

namespace Agent {

using Lanx::AddressFamily;
using Vrf::VrfIdMap::VrfId;

RouteRow RouteLookup::row(const Route& route) const {
    RouteRow row{route.key().prefix(), route.routeType(), {}, {}};
    const auto viaSet = view_.inputs.viaSetConfig()->viaSetCollection()->viaSet(route.viaSetKey());
    const auto& vias = row.prefix.af() == AddressFamily::ipv4 ? view_.root.ipv4AllVrfViaConfig()
                                                              : view_.root.ipv6AllVrfViaConfig();
    if (viaSet && viaSet->via() != nullptr) {
        const Routing::Rib::Via via = vias->via(*viaSet->via());
        if (via != Routing::Rib::Via()) {
            row.intf = via.intfId();
            row.via.name = Routing::DirectNet::viaSetName(viaSet->kind());
        }
    }
    if (route.srcVrfId() != VrfId::invalid()) {
        const L3::VrfName* source = view_.inputs.vrfs().name(route.srcVrfId());
        row.sourceVrf = NameOrNull{source == nullptr ? std::string() : source->value()};
    }
    return row;
}

} // namespace Agent
