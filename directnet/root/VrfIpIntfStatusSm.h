#pragma once

#include <utility>

#include "directnet/model/Units.h"
#include "directnet/ready/GrState.h"
#include "directnet/ready/VrfReadyStatus.h"
#include "directnet/root/IpIntfStatusSm.h"
#include "directnet/root/VrfIntfStatusMachine.h"
#include "platform/orb/attribute/Declare.h"

namespace Routing::DirectNet {

/// A VRF's side of IPv4: owns the IpIntfStatusSm while the VRF has IPv4 interface status, and
/// decides when the VRF's IPv4 routes are ready, see VrfIntfStatusMachine.
class VrfIpIntfStatusSm : public Orb::Entity, public VrfIntfStatusMachine<VrfIpIntfStatusSm> {
    ORB_ENTITY(VrfIpIntfStatusSm, "Routing::DirectNet::VrfIpIntfStatusSm")
    ORB_CONSTRUCTOR((L3::VrfName, vrfName), (Orb::Ptr<const Ip::Status>, ipStatus),
                    (Orb::Ptr<IntfViaSetConfig>, intfViaSetConfig),
                    (Orb::Ptr<IntfBacklog>, intfBacklog),
                    (Orb::Ptr<KernelIntfStatus>, kernelIntfStatus),
                    (Orb::Ptr<const GrState>, grState), (Orb::Ptr<VrfReadyStatus>, vrfReadyStatus))
    ORB_KEY(L3::VrfName, vrfName)
    ORB_CHILD(265, IpIntfStatusSm, ipIntfStatusSm)
    ORB_ATTRIBUTE(266, bool, initialized)

  public:
    explicit VrfIpIntfStatusSm(Arguments arguments);
    ~VrfIpIntfStatusSm() override;

    void handleVrfIpIntfStatus(const L3::VrfName& changed) { handleVrfIntfStatus(changed); }

    friend std::ostream& operator<<(std::ostream& out, const VrfIpIntfStatusSm& sm) {
        return out << "VrfIpIntfStatusSm " << sm.vrfName();
    }

  private:
    friend VrfIntfStatusMachine;
    using OrbIpStatus = OrbStatus<Ip::Status, Ip::Status::vrfIpIntfStatusId>;

    static constexpr const char* handlerName = "VrfIpIntfStatusSm::handleVrfIpIntfStatus";
    static constexpr const char* version = "v4";
    static constexpr const char* emptyNameText = "Empty vrfName, expected a valid vrfName";
    static constexpr const char* createText = "Instantiating IpIntfStatusSm";
    static constexpr const char* ringCreateText = " initializing ipIntfStatusSm vrf=";
    static constexpr const char* deleteText = "Destroying ipIntfStatusSm";
    static constexpr const char* ringDeleteText = " deleting ipIntfStatusSm vrf=";

    bool hasStatus() const { return ipStatus()->vrfIpIntfStatus(vrfName()) != nullptr; }
    void doCreateChild();
    void doDeleteChild() { ipIntfStatusSmDel(); }
    bool childIsStarting() const {
        return ipIntfStatusSm() != nullptr && !ipIntfStatusSm()->initialized();
    }
    void doSetReady() { vrfReadyStatus()->v4DirectNetsReadyIs(true); }

    OrbIpStatus orbIpStatus_;
    OrbIntfBacklog orbIntfBacklog_;
    OrbGrState orbGrState_;
};

} // namespace Routing::DirectNet
