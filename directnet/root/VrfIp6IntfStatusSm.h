#pragma once

#include <utility>

#include "directnet/model/Units.h"
#include "directnet/ready/GrState.h"
#include "directnet/ready/VrfReadyStatus.h"
#include "directnet/root/Ip6IntfStatusSm.h"
#include "directnet/root/VrfIntfStatusMachine.h"
#include "platform/orb/attribute/Declare.h"

namespace Routing::DirectNet {

/// A VRF's side of IPv6: owns the Ip6IntfStatusSm while the VRF has IPv6 interface status, and
/// decides when the VRF's IPv6 routes are ready, see VrfIntfStatusMachine.
class VrfIp6IntfStatusSm : public Orb::Entity, public VrfIntfStatusMachine<VrfIp6IntfStatusSm> {
    ORB_ENTITY(VrfIp6IntfStatusSm, "Routing::DirectNet::VrfIp6IntfStatusSm")
    ORB_CONSTRUCTOR((L3::VrfName, vrfName), (Orb::Ptr<const Ip6::Status>, ip6Status),
                    (Orb::Ptr<IntfViaSetConfig>, intfViaSetConfig),
                    (Orb::Ptr<IntfBacklog>, intfBacklog),
                    (Orb::Ptr<KernelIntfStatus>, kernelIntfStatus),
                    (Orb::Ptr<const GrState>, grState), (Orb::Ptr<VrfReadyStatus>, vrfReadyStatus))
    ORB_KEY(L3::VrfName, vrfName)
    ORB_CHILD(265, Ip6IntfStatusSm, ip6IntfStatusSm)
    ORB_ATTRIBUTE(266, bool, initialized)

  public:
    explicit VrfIp6IntfStatusSm(Arguments arguments);
    ~VrfIp6IntfStatusSm() override;

    void handleVrfIp6IntfStatus(const L3::VrfName& changed) { handleVrfIntfStatus(changed); }

    friend std::ostream& operator<<(std::ostream& out, const VrfIp6IntfStatusSm& sm) {
        return out << "VrfIp6IntfStatusSm " << sm.vrfName();
    }

  private:
    friend VrfIntfStatusMachine;
    using OrbIp6Status = OrbStatus<Ip6::Status, Ip6::Status::vrfIp6IntfStatusId>;

    static constexpr const char* handlerName = "VrfIp6IntfStatusSm::handleVrfIp6IntfStatus";
    static constexpr const char* version = "v6";
    static constexpr const char* emptyNameText = "Empty vrfName";
    static constexpr const char* createText = "Initializing ip6IntfStatusSm";
    static constexpr const char* ringCreateText = " initializing ip6IntfStatusSm vrf=";
    static constexpr const char* deleteText = "Destroying ipIntfStatusSm";
    static constexpr const char* ringDeleteText = " deleting ip6IntfStatusSm vrf=";

    bool hasStatus() const { return ip6Status()->vrfIp6IntfStatus(vrfName()) != nullptr; }
    void doCreateChild();
    void doDeleteChild() { ip6IntfStatusSmDel(); }
    bool childIsStarting() const {
        return ip6IntfStatusSm() != nullptr && !ip6IntfStatusSm()->initialized();
    }
    void doSetReady() { vrfReadyStatus()->v6DirectNetsReadyIs(true); }

    OrbIp6Status orbIp6Status_;
    OrbIntfBacklog orbIntfBacklog_;
    OrbGrState orbGrState_;
};

} // namespace Routing::DirectNet
