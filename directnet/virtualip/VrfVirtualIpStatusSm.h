#pragma once

#include <utility>

#include "directnet/backlog/IntfBacklog.h"
#include "directnet/backlog/IntfViaSetConfig.h"
#include "directnet/virtualip/VrfVirtualIpMachine.h"
#include "directnet/virtualip/VrfVirtualIpStatus.h"

namespace Routing::DirectNet::Ipv4 {

/// Turns the IPv4 virtual addresses of one VRF into contributions to its backlog: per interface
/// that carries an address a receive route of the address and, while the table says so, the
/// address's subnet. Zero and link-local addresses yield nothing and take no via sets.
class VrfVirtualIpStatusSm : public Orb::Entity,
                             public VrfVirtualIpMachine<VrfVirtualIpStatusSm, Traits::IPv4> {
    ORB_ENTITY(VrfVirtualIpStatusSm, "Routing::DirectNet::Ipv4::VrfVirtualIpStatusSm")
    ORB_CONSTRUCTOR((Orb::Ptr<const VrfVirtualIpStatus>, vrfVirtualIpStatus),
                    (Orb::Ptr<IntfViaSetConfig>, intfViaSetConfig),
                    (Orb::Ptr<IntfBacklog>, intfBacklog))
    /// The machine's own via sets, apart from those of the VRF's interfaces.
    ORB_CHILD(261, IntfViaSetKeyStatus, ivskStatus)

    ORB_REACTORS(262, OrbVirtualIpIntfStatusSm, virtualIpIntfStatusSm)
    ORB_ATTRIBUTE(263, bool, initialized)

  public:
    explicit VrfVirtualIpStatusSm(Arguments arguments);
    ~VrfVirtualIpStatusSm() override;

    const VrfVirtualIpStatus& table() const { return *vrfVirtualIpStatus(); }

    Orb::Ptr<IntfViaSetKeyStatus> newIvskStatus(Lanx::AddressFamily af) { return ivskStatusIs(af); }

    void handleSubnetRouteEnabled();

    void orbDoZombieReactors(bool zombie) override;

    friend std::ostream& operator<<(std::ostream& out, const VrfVirtualIpStatusSm& sm) {
        return out << sm.table().name();
    }

  private:
    using OrbVrfVirtualIpStatus = VirtualIpTableReactor<VrfVirtualIpStatusSm, VrfVirtualIpStatus>;

    OrbVrfVirtualIpStatus orbVrfVirtualIpStatus_;
};

} // namespace Routing::DirectNet::Ipv4

namespace Routing::DirectNet::Ipv6 {

/// Turns the IPv6 virtual addresses of one VRF into contributions to its backlog: per interface
/// that carries an address a receive route of the address. Zero and link-local addresses yield
/// nothing and take no via sets.
class VrfVirtualIpStatusSm : public Orb::Entity,
                             public VrfVirtualIpMachine<VrfVirtualIpStatusSm, Traits::IPv6> {
    ORB_ENTITY(VrfVirtualIpStatusSm, "Routing::DirectNet::Ipv6::VrfVirtualIpStatusSm")
    ORB_CONSTRUCTOR((Orb::Ptr<const VrfVirtualIpStatus>, vrfVirtualIp6Status),
                    (Orb::Ptr<IntfViaSetConfig>, intfViaSetConfig),
                    (Orb::Ptr<IntfBacklog>, intfBacklog))
    /// The machine's own via sets, apart from those of the VRF's interfaces.
    ORB_CHILD(261, IntfViaSetKeyStatus, ivskStatus)

    ORB_REACTORS(262, OrbVirtualIpIntfStatusSm, virtualIpIntfStatusSm)
    ORB_ATTRIBUTE(263, bool, initialized)

  public:
    explicit VrfVirtualIpStatusSm(Arguments arguments);
    ~VrfVirtualIpStatusSm() override;

    const VrfVirtualIpStatus& table() const { return *vrfVirtualIp6Status(); }

    Orb::Ptr<IntfViaSetKeyStatus> newIvskStatus(Lanx::AddressFamily af) { return ivskStatusIs(af); }

    void handleSubnetRouteEnabled();

    void orbDoZombieReactors(bool zombie) override;

    friend std::ostream& operator<<(std::ostream& out, const VrfVirtualIpStatusSm& sm) {
        return out << sm.table().name();
    }

  private:
    using OrbVrfVirtualIpStatus = VirtualIpTableReactor<VrfVirtualIpStatusSm, VrfVirtualIpStatus>;

    OrbVrfVirtualIpStatus orbVrfVirtualIpStatus_;
};

} // namespace Routing::DirectNet::Ipv6
