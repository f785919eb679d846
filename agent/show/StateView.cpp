#include "agent/show/StateView.h"

#include <algorithm>
#include <cmath>

namespace Agent {

using Lanx::AddressFamily;
using Routing::DirectNet::IntfViaSetKeyStatus;
using Vrf::VrfIdMap::VrfId;

StateView::StateView(const RootSm& root, const DeviceInputs& inputs, double time)
    : root_(root), inputs_(inputs), time_(inMicroseconds(time)) {
    for (const auto& container : root.containerSm()) {
        indexViaSets(*container->intfBacklog()->intfViaSetKeyStatus4());
        indexViaSets(*container->intfBacklog()->intfViaSetKeyStatus6());
        indexViaSets(*container->vrfVirtualIpStatusSm()->ivskStatus());
        indexViaSets(*container->vrfVirtualIp6StatusSm()->ivskStatus());
    }
}

double StateView::inMicroseconds(double seconds) { return std::round(seconds * 1e6) / 1e6; }

void StateView::indexViaSets(const IntfViaSetKeyStatus& status) {
    for (const auto& [intfId, keys] : status.intfViaSetKey()) {
        viaNames_.insertOrAssign(keys.viaSetKey(), "connected");
        viaNames_.insertOrAssign(keys.rxViaSetKey(), "receive");
        if (status.af() == AddressFamily::ipv4) {
            viaNames_.insertOrAssign(keys.rxBcastViaSetKey(), "receive-broadcast");
            viaNames_.insertOrAssign(keys.directedBcastViaSetKey(), "directed-broadcast");
        }
    }
}

std::vector<StateView::Vrf> StateView::vrfs() const {
    std::vector<Vrf> vrfs;
    for (const auto& container : root_.containerSm()) {
        const auto* rib = inputs_.protoStatusDir()->entity(Orb::Name(container->vrfName().value()));
        vrfs.push_back({container.get(), container->vrfReadyStatus()->v4DirectNetsReady(),
                        container->vrfReadyStatus()->v6DirectNetsReady(),
                        dynamic_cast<const Routing::Rib::ProtoVrfStatus*>(rib),
                        container->intfBacklog()->backlog().size()});
    }
    std::sort(vrfs.begin(), vrfs.end(), [](const Vrf& a, const Vrf& b) {
        return a.container->vrfName() < b.container->vrfName();
    });
    return vrfs;
}

std::vector<const StateView::Route*> StateView::routes(const Vrf& vrf, AddressFamily af) const {
    const auto& config =
        af == AddressFamily::ipv4 ? root_.ipv4AllVrfRouteConfig() : root_.ipv6AllVrfRouteConfig();
    std::vector<const Route*> sorted;
    if (const auto* routes = config->routes(vrf.container->vrfId())) {
        sorted.reserve(routes->size());
        for (const Route& route : *routes) {
            sorted.push_back(&route);
        }
    }
    std::sort(sorted.begin(), sorted.end(),
              [](const Route* a, const Route* b) { return a->key().prefix() < b->key().prefix(); });
    return sorted;
}

StateView::Target StateView::target(const Route& route) const {
    Target target{};
    const auto* viaSet = inputs_.viaSetConfig()->viaSetCollection()->viaSet(route.viaSetKey());
    if (viaSet != nullptr && !viaSet->viaKey().empty()) {
        const Routing::Rib::Via via =
            viaConfig(route.key().prefix().af()).via(viaSet->viaKey().front());
        if (via != Routing::Rib::Via()) {
            target.intfId = via.intfId();
        }
    }
    if (const std::string_view* name = viaNames_.find(route.viaSetKey())) {
        target.via = *name;
    }
    if (route.srcVrfId() != VrfId::invalid()) {
        target.leaked = true;
        target.sourceVrf = inputs_.vrfs().name(route.srcVrfId());
    }
    return target;
}

std::size_t StateView::viaSets() const {
    return inputs_.viaSetConfig()->viaSetCollection()->size();
}

const Routing::Rib::Ip::ViaConfig& StateView::viaConfig(AddressFamily af) const {
    return af == AddressFamily::ipv4 ? *root_.ipv4AllVrfViaConfig() : *root_.ipv6AllVrfViaConfig();
}

} // namespace Agent
