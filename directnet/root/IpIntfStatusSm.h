#pragma once

#include <utility>

#include "directnet/model/Units.h"
#include "directnet/root/IntfStatusMachine.h"
#include "directnet/root/IpIntfSm.h"
#include "platform/ip/Status.h"
#include "platform/orb/attribute/Declare.h"

namespace Routing::DirectNet {

/// The IPv4 interfaces of a VRF that has IPv4 interface status: one address machine per
/// interface that is there on both sides, see IntfStatusMachine.
class IpIntfStatusSm : public Orb::Entity, public IntfStatusMachine<IpIntfStatusSm> {
    ORB_ENTITY(IpIntfStatusSm, "Routing::DirectNet::IpIntfStatusSm")
    ORB_CONSTRUCTOR((Orb::Ptr<const Ip::VrfIpIntfStatus>, vrfIpIntfStatus),
                    (Orb::Ptr<IntfViaSetConfig>, intfViaSetConfig),
                    (Orb::Ptr<IntfBacklog>, intfBacklog),
                    (Orb::Ptr<KernelIntfStatus>, kernelIntfStatus))
    ORB_CHILDREN(262, IpIntfSm, ipIntfSm)
    ORB_ATTRIBUTE(263, bool, initialized)

  public:
    explicit IpIntfStatusSm(Arguments arguments);
    ~IpIntfStatusSm() override;

    void handleInitialized() { initializedIs(true); }
    void handleIpIntfStatus() { handleEvery(vrfIpIntfStatus()->ipIntfStatus()); }

    friend std::ostream& operator<<(std::ostream& out, const IpIntfStatusSm& sm) {
        return out << "IpIntfStatusSm " << sm.vrfIpIntfStatus()->vrfName();
    }

  private:
    friend IntfStatusMachine;
    using OrbVrfIpIntfStatus =
        OrbIntfStatuses<Ip::VrfIpIntfStatus, Ip::VrfIpIntfStatus::ipIntfStatusId>;

    static constexpr const char* absentText = " not present in vrfIpIntfStatus";
    static constexpr const char* createText = " IPv4 SM create";
    static constexpr const char* deleteText = " IPv4 SM delete";

    bool hasIntfStatus(Lanx::IntfId intfId) const;
    /// Whether the interface has a machine, and whether it is that of the present status.
    bool hasAnyIntfSm(Lanx::IntfId intfId) const { return ipIntfSm(intfId) != nullptr; }
    bool hasIntfSm(Lanx::IntfId intfId) const;
    void doCreateIntfSm(Lanx::IntfId intfId);
    void doDeleteIntfSm(Lanx::IntfId intfId) { ipIntfSmDel(intfId); }

    OrbVrfIpIntfStatus orbVrfIpIntfStatus_;
    OrbKernelIntfDir orbKernelIntfDir_;
};

} // namespace Routing::DirectNet
