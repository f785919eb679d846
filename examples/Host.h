// What the example hosts have in common: the inputs, and the way from a route to its interface.
#pragma once

#include "directnet/root/RootSm.h"
#include "platform/interface/KernelNetInfo.h"
#include "platform/memtab/Mount.h"

namespace Example {

using namespace Routing;

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

/// Tells of a running kernel device. These stand in a table per network namespace, which is found
/// by its path.
inline void publishDevice(const Inputs& inputs, const Lanx::NamespaceName& netns,
                          Lanx::IntfId intfId, const std::string& device) {
    const Orb::String path = DirectNet::MountPaths::kernelDevices(netns);
    OrbMemtab::Mount mount(inputs.tables);
    mount.doMount(path, KernelNetInfo::Status::orbTypeName,
                  OrbMemtab::MountInfo(OrbMemtab::MountInfo::Type::write));
    mount.getEntity<KernelNetInfo::Status>(path)->deviceIs(intfId, {device, true});
}

/// A route names a via set, the set a via, and the via the interface.
inline Lanx::IntfId interfaceOf(const Inputs& inputs, const Rib::Ip::ViaConfig& vias,
                                const Rib::Route& route) {
    const auto viaSet = inputs.viaSets->viaSetCollection()->viaSet(route.viaSetKey());
    return viaSet ? vias.via(*viaSet->via()).intfId() : Lanx::IntfId();
}

} // namespace Example
