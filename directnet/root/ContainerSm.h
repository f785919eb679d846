#pragma once

#include <utility>

#include "directnet/backlog/IntfBacklogSm.h"
#include "directnet/model/Units.h"
#include "directnet/ready/GrState.h"
#include "directnet/ready/VrfReadyStatus.h"
#include "directnet/root/KernelIntfStatus.h"
#include "directnet/root/VrfIntfStatusSm.h"
#include "directnet/virtualip/VrfVirtualIpStatus.h"
#include "directnet/virtualip/VrfVirtualIpStatusSm.h"
#include "platform/interface/NetNsIntfStatusManagerRoot.h"
#include "platform/ip/AllVrfStatusLocal.h"
#include "platform/ip/VrfStatusLocal.h"
#include "platform/memtab/Mount.h"
#include "platform/vaultdb/EntityManager.h"
#include "platform/vrf/NameToIdMap.h"
#include "platform/vrf/NameToIdMapWrapper.h"

namespace Routing::DirectNet {

/// Everything that the agent does for one VRF: its view of kernel devices, its backlog machine, its
/// interface machines and its virtual IP machines. Begins by clearing what the output tables still
/// hold for the VRF's id, and on deletion removes all that it wrote there.
class ContainerSm : public Orb::Entity {
    ORB_ENTITY(ContainerSm, "Routing::DirectNet::ContainerSm")
    ORB_CONSTRUCTOR(
        (Orb::Ptr<Vaultdb::EntityManager>, entityManager), (L3::VrfName, vrfName),
        (Vrf::VrfIdMap::VrfId, vrfId), (Orb::Ptr<Rib::ViaSetConfig>, viaSetConfig),
        (Orb::Ptr<const Ip::Status>, ipStatus, Orb::mayBeNull),
        (Orb::Ptr<const Ip6::Status>, ip6Status, Orb::mayBeNull),
        (Orb::Ptr<const Ipv4::VrfVirtualIpStatus>, vrfVirtualIpStatus),
        (Orb::Ptr<const Ipv6::VrfVirtualIpStatus>, vrfVirtualIp6Status),
        (Orb::Ptr<const Vrf::VrfIdMap::NameToIdMapWrapper>, nameToIdMapWrapper, Orb::mayBeNull),
        (Orb::Ptr<const Ip::AllVrfStatusLocal>, allVrfStatusLocal),
        (Orb::Ptr<const Interface::AllIntfStatusDir>, allIntfStatusDir),
        (Orb::Ptr<const Interface::AllIntfStatusLocalDir>, allIntfStatusLocalDir),
        (Orb::Ptr<Interface::NetNsIntfStatusManagerRoot>, intfStatusManagerRoot),
        (Orb::Ptr<Rib::RouteConfig>, route4Config), (Orb::Ptr<Rib::RouteConfig>, route6Config),
        (Orb::Ptr<Rib::Ip::ViaConfig>, ipv4ViaConfig),
        (Orb::Ptr<Rib::Ip::ViaConfig>, ipv6ViaConfig),
        (Orb::Ptr<IntfViaSetConfig>, intfViaSetConfig), (Orb::Ptr<IntfBacklog>, intfBacklog),
        (Orb::Ptr<const GrState>, grState), (Orb::Ptr<VrfReadyStatus>, vrfReadyStatus))
    ORB_KEY(L3::VrfName, vrfName)
    /// The VRF's network namespace.
    ORB_ATTRIBUTE(279, Lanx::NamespaceName, netNs)
    ORB_ATTRIBUTE(280, Orb::Ptr<Interface::DeviceIntfStatusDir>, kernelIntfStatusDir)
    ORB_CHILD(281, KernelIntfStatus, kernelIntfStatus)
    ORB_CHILD(282, VrfIpIntfStatusSm, vrfIpIntfStatusSm)
    ORB_CHILD(283, VrfIp6IntfStatusSm, vrfIp6IntfStatusSm)
    ORB_SOLE_CHILD(284, Ipv4::VrfVirtualIpStatusSm, vrfVirtualIpStatusSm)
    ORB_SOLE_CHILD(285, Ipv6::VrfVirtualIpStatusSm, vrfVirtualIp6StatusSm)
    ORB_CHILD(286, IntfBacklogSm, intfBacklogSm)
    ORB_ATTRIBUTE(287, bool, initialized)

  public:
    static Orb::Ptr<ContainerSm> ContainerSmIs(Arguments arguments) {
        return Orb::makePtr<ContainerSm>(std::move(arguments));
    }

    explicit ContainerSm(Arguments arguments);
    ~ContainerSm() override;

    void handleInitialized();

    /// Mounts the kernel-interface status of the VRF's namespace and has it followed.
    void doKniInit();
    void doKniDelete();

    /// Removes every via and route that the output tables hold for the VRF's id.
    void clearState();

    /// Undoes what the container holds elsewhere: the kernel status, the via sets of the VRF's
    /// interfaces, its vias and its routes.
    void doCleanup();

    friend std::ostream& operator<<(std::ostream& out, const ContainerSm& container) {
        return out << container.vrfName();
    }

  private:
    void doReleaseViaSetKeys();
    void doReleaseAllViaSetKeys();

    void doRelease();

    OrbMemtab::Mount mount_;
    bool mounted_ = false; // the kernel-interface status
};

} // namespace Routing::DirectNet
