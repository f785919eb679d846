// The smallest host of the library: publishes one interface address and prints the routes that it
// becomes. Time is simulated, so the program ends at once. A host that lives on a device gives the
// activity manager a RealClock and calls runOnce() in a loop.

#include <iostream>
#include <map>

#include "directnet/root/RootSm.h"
#include "platform/orb/loop/ActivityManager.h"
#include "platform/orb/loop/SimulatedClock.h"

using namespace Routing;

namespace {

/// The inputs of the root. The host owns them and changes them; the library only watches.
struct Inputs {
    explicit Inputs(const Orb::Ptr<Orb::Clock>& clock)
        : scheduler(Orb::makePtr<Kiln::TaskScheduler>(clock)) {}

    Orb::Ptr<DirectNet::RootSm> makeRoot() const {
        return DirectNet::RootSm::RootSmIs({.entityManager = tables,
                                            .scheduler = scheduler,
                                            .viaSetConfig = viaSets,
                                            .ipStatus = ipv4,
                                            .ip6Status = ipv6,
                                            .virtualIpStatus = virtualIps4,
                                            .virtualIp6Status = virtualIps6,
                                            .virtualIpAsReceiveRoute = virtualIpAsReceiveRoute,
                                            .nameToIdMapWrapper = vrfIds,
                                            .allVrfStatusLocal = vrfs,
                                            .allIntfStatusDir = interfaces,
                                            .allIntfStatusLocalDir = localInterfaces,
                                            .allVrfRibReady = ribWaits,
                                            .protoStatusDir = ribReady,
                                            .grState = grState});
    }

    Orb::Ptr<Vaultdb::EntityManager> tables = Orb::makePtr<Vaultdb::EntityManager>();
    Orb::Ptr<Kiln::TaskScheduler> scheduler;
    Orb::Ptr<Rib::ViaSetConfig> viaSets = Orb::makePtr<Rib::ViaSetConfig>();
    Orb::Ptr<Ip::Status> ipv4 = Orb::makePtr<Ip::Status>();
    Orb::Ptr<Ip6::Status> ipv6 = Orb::makePtr<Ip6::Status>();
    Orb::Ptr<VirtualIp::VirtualIpStatus> virtualIps4 = Orb::makePtr<VirtualIp::VirtualIpStatus>();
    Orb::Ptr<VirtualIp::VirtualIp6Status> virtualIps6 = Orb::makePtr<VirtualIp::VirtualIp6Status>();
    Orb::Ptr<Arp::VirtualIpAsReceiveRoute> virtualIpAsReceiveRoute =
        Orb::makePtr<Arp::VirtualIpAsReceiveRoute>();
    Orb::Ptr<Vrf::VrfIdMap::NameToIdMapWrapper> vrfIds =
        Orb::makePtr<Vrf::VrfIdMap::NameToIdMapWrapper>();
    Orb::Ptr<Ip::AllVrfStatusLocal> vrfs = Orb::makePtr<Ip::AllVrfStatusLocal>();
    Orb::Ptr<Interface::AllIntfStatusDir> interfaces = Orb::makePtr<Interface::AllIntfStatusDir>();
    Orb::Ptr<Interface::AllIntfStatusLocalDir> localInterfaces =
        Orb::makePtr<Interface::AllIntfStatusLocalDir>();
    Orb::Ptr<Rib::AllVrfRibReady> ribWaits = Orb::makePtr<Rib::AllVrfRibReady>();
    Orb::Ptr<Orb::Dir> ribReady = Orb::makePtr<Orb::Dir>();
    Orb::Ptr<DirectNet::GrState> grState =
        Orb::makePtr<DirectNet::GrState>(DirectNet::GrState::Arguments{false});
};

/// Publishes an interface of the default VRF: its kernel device and its primary address.
void publish(const Inputs& inputs, Lanx::IntfId intfId, const Lanx::IpAddrWithMask& address) {
    // Kernel devices stand in a table per network namespace, which is found by its path.
    const Orb::String path =
        DirectNet::MountPaths::kernelDevices(Lanx::NamespaceName::defaultNamespace());
    OrbMemtab::Mount mount(inputs.tables);
    mount.doMount(path, KernelNetInfo::Status::orbTypeName,
                  OrbMemtab::MountInfo(OrbMemtab::MountInfo::Type::write));
    mount.getEntity<KernelNetInfo::Status>(path)->deviceIs(intfId, {"et1", true});

    inputs.ipv4->vrfIpIntfStatusIs(L3::VrfName::defaultVrf())
        ->ipIntfStatusIs(intfId)
        ->activeAddrWithMaskIs(address);
}

/// A route names a via set, the set a via, and the via the interface.
Lanx::IntfId interfaceOf(const Inputs& inputs, const Rib::Ip::ViaConfig& vias,
                         const Rib::Route& route) {
    const auto* viaSet = inputs.viaSets->viaSetCollection()->viaSet(route.viaSetKey());
    return viaSet == nullptr ? Lanx::IntfId() : vias.via(viaSet->viaKey().front()).intfId();
}

} // namespace

int main() {
    const Orb::Ptr<Orb::Clock> clock = Orb::makePtr<Orb::SimulatedClock>();
    Orb::ActivityManager activityManager(clock);
    const Inputs inputs(clock);
    const auto root = inputs.makeRoot();

    constexpr Vrf::VrfIdMap::VrfId vrfId(0);
    inputs.vrfIds->nameToIdMapIs(Orb::makePtr<Vrf::VrfIdMap::NameToIdMap>());
    inputs.vrfIds->nameToIdMap()->vrfIdIs(L3::VrfName::defaultVrf(), vrfId);
    publish(inputs, Lanx::IntfId("Ethernet1"), Lanx::IpAddrWithMask::fromString("10.1.1.5/24"));
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
