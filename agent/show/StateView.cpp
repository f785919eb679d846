#include "agent/show/StateView.h"

#include <algorithm>

namespace Agent {

using Lanx::AddressFamily;

StateView::StateView(const RootSm& root, const DeviceInputs& inputs, double time)
    : root_(root), inputs_(inputs), time_(time), lookup_(root, inputs) {}

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

std::size_t StateView::viaSets() const {
    return inputs_.viaSetConfig()->viaSetCollection()->size();
}

const Routing::Rib::Ip::ViaConfig& StateView::viaConfig(AddressFamily af) const {
    return af == AddressFamily::ipv4 ? *root_.ipv4AllVrfViaConfig() : *root_.ipv6AllVrfViaConfig();
}

} // namespace Agent
