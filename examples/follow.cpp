// A host that follows what the library does: a second VRF in a network namespace of its own, an
// IPv6 address in it, every change of a route as it happens, the moment when the VRF is complete,
// and the stop.

#include <iostream>

#include "Host.h"
#include "platform/orb/loop/ActivityManager.h"
#include "platform/orb/loop/SimulatedClock.h"
#include "platform/orb/object/Reactor.h"

using namespace Example;

namespace {

/// Prints every change of a route table. Lives as long as somebody holds it.
class RoutePrinter : public Orb::PtrInterface {
  public:
    RoutePrinter(const Inputs& inputs, Orb::Ptr<Rib::Ip::ViaConfig> vias,
                 const Orb::Ptr<Rib::RouteConfig>& routes)
        : inputs_(inputs), vias_(std::move(vias)), routes_(this) {
        routes_.notifierIs(routes);
    }

  private:
    class Routes : public Orb::Reactor<RoutePrinter, Rib::RouteConfig> {
      public:
        using Reactor::Reactor;
        void onAttribute(Orb::AttributeId id, const void* key) override {
            if (id == Rib::RouteConfig::routeAttribute) {
                owner()->print(*notifier(), Orb::keyAs<Rib::RouteKey>(key));
            }
        }
    };

    void print(const Rib::RouteConfig& routes, const Rib::RouteKey& key) const {
        std::cout << "VRF " << key.vrfId() << ": " << key.prefix();
        if (const Rib::Route route = routes.route(key); !route) {
            std::cout << " is gone\n";
        } else {
            std::cout << " on " << interfaceOf(inputs_, *vias_, route) << '\n';
        }
    }

    const Inputs& inputs_;
    Orb::Ptr<Rib::Ip::ViaConfig> vias_;
    Routes routes_; // last, so that it is the first to go
};

/// A VRF needs an id, a status that is active, and running devices in its namespace.
void publishVrf(const Inputs& inputs, const L3::VrfName& name, Vrf::VrfIdMap::VrfId id,
                const Lanx::NamespaceName& netns) {
    Ip::VrfStatusLocal* status = inputs.vrfs->vrfIs(name);
    status->netNsIs(netns);
    status->stateIs(Ip::VrfState::active);
    inputs.vrfIds->nameToIdMap()->vrfIdIs(name, id);
}

} // namespace

int main() {
    const Orb::Ptr<Orb::Clock> clock = Orb::makePtr<Orb::SimulatedClock>();
    Orb::ActivityManager activityManager(clock);
    const Inputs inputs(clock);
    const auto root = inputs.makeRoot();
    auto printer = Orb::makePtr<RoutePrinter>(inputs, root->ipv6AllVrfViaConfig(),
                                              root->ipv6AllVrfRouteConfig());

    const L3::VrfName red("red");
    const Lanx::NamespaceName netns("ns-red");
    const Lanx::IntfId intfId("Ethernet2");
    const auto address = Lanx::Ip6AddrWithMask::fromString("2001:db8::1/64");

    // The address before the VRF: it is not called complete before its routes are there.
    publishDevice(inputs, netns, intfId, "et2");
    const Orb::Ptr<Ip6::IntfStatus> addresses(
        inputs.ipv6->vrfIp6IntfStatusIs(red)->intfStatusIs(intfId));
    addresses->addrIs(address, {.active = true});
    inputs.vrfIds->nameToIdMapIs(Orb::makePtr<Vrf::VrfIdMap::NameToIdMap>());
    publishVrf(inputs, red, Vrf::VrfIdMap::VrfId(5), netns);
    activityManager.runUntilIdle();
    if (root->allVrfReadyStatus()->vrfReadyStatus(red)->v6DirectNetsReady()) {
        std::cout << "VRF red is complete\n";
    }

    addresses->addrDel(address);
    activityManager.runUntilIdle();

    printer = nullptr;
    root->handleDelete();
}
