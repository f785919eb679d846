#include "agent/topics/StateWalk.h"

#include "agent/device/DeviceInputs.h"
#include "agent/topics/KernelWords.h"
#include "directnet/root/RootSm.h"
#include "platform/orb/loop/Clock.h"
#include "platform/orb/value/Name.h"
#include "platform/routing/ProtoVrfStatus.h"

namespace Agent {

bool StateWalk::step(StateSink& sink) {
    switch (next_) {
    case Next::time:
        sink.time({{view_.clock.now()}, label_});
        next_ = Next::vrf;
        return true;
    case Next::vrf:
        if (const auto* vrf = walk_.vrf()) {
            sink.vrf(vrfRow(view_, *vrf));
        }
        next_ = Next::routes;
        return true;
    case Next::routes:
        if (const auto route = walk_.nextRoute()) {
            if (!filter_.admits(route->key().prefix())) {
                return true;
            }
            RouteRow row = lookup_.row(*route);
            if (view_.kernel != nullptr) {
                row.kernel = view_.kernel->words(route->key());
            }
            if (filter_.admits(row)) {
                sink.route(row);
            }
            return true;
        }
        next_ = walk_.nextVrf() ? Next::vrf : Next::totals;
        return true;
    case Next::totals:
        sink.totals(totalsRow());
        next_ = Next::end;
        return true;
    case Next::end:
        break;
    }
    return false;
}

VrfRow vrfRow(const AgentView& view, const RouteWalk::ContainerSm& vrf) {
    VrfRow row;
    row.vrf = vrf.vrfName().value();
    row.id = vrf.vrfId().value();
    row.ready = {vrf.vrfReadyStatus()->v4DirectNetsReady(),
                 vrf.vrfReadyStatus()->v6DirectNetsReady()};
    const auto* rib = dynamic_cast<const Routing::Rib::ProtoVrfStatus*>(
        view.inputs.protoStatusDir()->entity(Orb::Name(row.vrf)));
    if (rib != nullptr) {
        row.rib = RibWait{rib->ready(), {rib->readyTime()}};
    }
    row.backlog = vrf.intfBacklog()->backlog().size();
    const auto* ipv4 = view.root.ipv4AllVrfRouteConfig()->routes(vrf.vrfId());
    const auto* ipv6 = view.root.ipv6AllVrfRouteConfig()->routes(vrf.vrfId());
    row.ipv4Routes = ipv4 == nullptr ? 0 : ipv4->size();
    row.ipv6Routes = ipv6 == nullptr ? 0 : ipv6->size();
    return row;
}

TotalsRow StateWalk::totalsRow() const {
    return {view_.root.ipv4AllVrfViaConfig()->size(), view_.root.ipv6AllVrfViaConfig()->size(),
            view_.inputs.viaSetConfig()->viaSetCollection()->size()};
}

void printState(StateSink& sink, const AgentView& view, const std::optional<std::string>& label) {
    StateWalk walk(view, {}, label);
    while (walk.step(sink)) {
    }
}

} // namespace Agent
