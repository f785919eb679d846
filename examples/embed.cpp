// The smallest host of the library: publishes one interface address and prints the routes that it
// becomes. Time is simulated, so the program ends at once. A host that lives on a device gives the
// activity manager a RealClock and calls runOnce() in a loop.

#include <iostream>
#include <map>

#include "Host.h"
#include "platform/orb/loop/ActivityManager.h"
#include "platform/orb/loop/SimulatedClock.h"

using namespace Example;

int main() {
    const Orb::Ptr<Orb::Clock> clock = Orb::makePtr<Orb::SimulatedClock>();
    Orb::ActivityManager activityManager(clock);
    const Inputs inputs(clock);
    const auto root = inputs.makeRoot();

    constexpr Vrf::VrfIdMap::VrfId vrfId(0);
    inputs.vrfIds->nameToIdMapIs(Orb::makePtr<Vrf::VrfIdMap::NameToIdMap>());
    inputs.vrfIds->nameToIdMap()->vrfIdIs(L3::VrfName::defaultVrf(), vrfId);

    const Lanx::IntfId intfId("Ethernet1");
    publishDevice(inputs, Lanx::NamespaceName::defaultNamespace(), intfId, "et1");
    inputs.ipv4->vrfIpIntfStatusIs(L3::VrfName::defaultVrf())
        ->ipIntfStatusIs(intfId)
        ->activeAddrWithMaskIs(Lanx::IpAddrWithMask::fromString("10.1.1.5/24"));
    activityManager.runUntilIdle();

    std::map<Lanx::IpGenPrefix, Rib::Route> sorted;
    if (const auto* routes = root->ipv4AllVrfRouteConfig()->routes(vrfId)) {
        for (const Rib::Route& route : *routes) {
            sorted.emplace(route.key().prefix(), route);
        }
    }
    for (const auto& [prefix, route] : sorted) {
        std::cout << prefix << " type " << route.routeType() << " on "
                  << interfaceOf(inputs, *root->ipv4AllVrfViaConfig(), route) << '\n';
    }
    root->handleDelete();
}
