#pragma once

#include <utility>

#include "directnet/model/Units.h"
#include "directnet/root/IntfStatusMachine.h"
#include "directnet/root/Ip6IntfSm.h"
#include "platform/ip/Ip6Status.h"
#include "platform/orb/attribute/Declare.h"

namespace Routing::DirectNet {

/// The IPv6 interfaces of a VRF that has IPv6 interface status: one address machine per
/// interface that is there on both sides, see IntfStatusMachine.
class Ip6IntfStatusSm : public Orb::Entity, public IntfStatusMachine<Ip6IntfStatusSm> {
    ORB_ENTITY(Ip6IntfStatusSm, "Routing::DirectNet::Ip6IntfStatusSm")
    ORB_CONSTRUCTOR((Orb::Ptr<const Ip6::VrfIp6IntfStatus>, vrfIp6IntfStatus),
                    (Orb::Ptr<IntfViaSetConfig>, intfViaSetConfig),
                    (Orb::Ptr<IntfBacklog>, intfBacklog),
                    (Orb::Ptr<KernelIntfStatus>, kernelIntfStatus))
    ORB_CHILDREN(262, Ip6IntfSm, ip6IntfSm)
    ORB_ATTRIBUTE(263, bool, initialized)

  public:
    explicit Ip6IntfStatusSm(Arguments arguments);
    ~Ip6IntfStatusSm() override;

    void handleInitialized() { initializedIs(true); }
    void handleIp6IntfStatus() { handleEvery(vrfIp6IntfStatus()->intfStatus()); }

    friend std::ostream& operator<<(std::ostream& out, const Ip6IntfStatusSm& sm) {
        return out << "Ip6IntfStatusSm " << sm.vrfIp6IntfStatus()->vrfName();
    }

  private:
    friend IntfStatusMachine;
    using OrbVrfIp6IntfStatus =
        OrbIntfStatuses<Ip6::VrfIp6IntfStatus, Ip6::VrfIp6IntfStatus::intfStatusId>;

    static constexpr const char* absentText = " not present in vrfIp6IntfStatus";
    static constexpr const char* createText = " IPv6 SM create";
    static constexpr const char* deleteText = " IPv6 SM delete";

    bool hasIntfStatus(Lanx::IntfId intfId) const;
    /// Whether the interface has a machine, and whether it is that of the present status.
    bool hasAnyIntfSm(Lanx::IntfId intfId) const { return ip6IntfSm(intfId) != nullptr; }
    bool hasIntfSm(Lanx::IntfId intfId) const;
    void doCreateIntfSm(Lanx::IntfId intfId);
    void doDeleteIntfSm(Lanx::IntfId intfId) { ip6IntfSmDel(intfId); }

    OrbVrfIp6IntfStatus orbVrfIp6IntfStatus_;
    OrbKernelIntfDir orbKernelIntfDir_;
};

} // namespace Routing::DirectNet
