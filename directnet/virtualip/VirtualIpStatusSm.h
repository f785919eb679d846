#pragma once

#include <utility>

#include "directnet/virtualip/VrfVirtualIpStatusHelper.h"
#include "platform/virtualip/VirtualIp6Status.h"
#include "platform/virtualip/VirtualIpStatus.h"

namespace Routing::DirectNet::Ipv4 {

/// Sorts the platform's flat collection of IPv4 virtual addresses into the tables of their VRFs,
/// and hands the platform's subnet-route setting on to every table. Makes no routes.
class VirtualIpStatusSm : public Orb::Entity {
    ORB_ENTITY(VirtualIpStatusSm, "Routing::DirectNet::Ipv4::VirtualIpStatusSm")
    ORB_CONSTRUCTOR((Orb::Ptr<const VirtualIp::VirtualIpStatus>, virtualIpStatus),
                    (Orb::Ptr<VrfVirtualIpStatusHelper>, vrfVirtualIpStatusHelper))
    ORB_ATTRIBUTE(260, bool, initialized)

  public:
    explicit VirtualIpStatusSm(Arguments arguments);
    ~VirtualIpStatusSm() override;

    void handleInitialized();
    void handleVirtualIpStatus(const VirtualIp::VrfIpWithMaskPair& key);
    void handleVirtualIpStatus();
    void handleSubnetRoutes();

  private:
    class OrbVirtualIpStatus
        : public Orb::InputReactor<VirtualIpStatusSm, VirtualIp::VirtualIpStatus> {
      public:
        using InputReactor::InputReactor;
        void onAttribute(Orb::AttributeId id, const void* key) override;
        void notifierIs(Orb::Ptr<const VirtualIp::VirtualIpStatus> status) override;
    };

    OrbVirtualIpStatus orbVirtualIpStatus_;
};

} // namespace Routing::DirectNet::Ipv4

namespace Routing::DirectNet::Ipv6 {

/// Sorts the platform's flat collection of IPv6 virtual addresses into the tables of their VRFs.
/// Subnet routes are not for this family, on purpose: the machine's own setting reaches no table.
class VirtualIpStatusSm : public Orb::Entity {
    ORB_ENTITY(VirtualIpStatusSm, "Routing::DirectNet::Ipv6::VirtualIpStatusSm")
    ORB_CONSTRUCTOR((Orb::Ptr<const VirtualIp::VirtualIp6Status>, virtualIpStatus),
                    (Orb::Ptr<VrfVirtualIpStatusHelper>, vrfVirtualIpStatusHelper))
    ORB_ATTRIBUTE(260, bool, subnetRouteEnabled)
    ORB_ATTRIBUTE(261, bool, initialized)

  public:
    explicit VirtualIpStatusSm(Arguments arguments);
    ~VirtualIpStatusSm() override;

    void handleInitialized();
    void handleVirtualIpStatus(const VirtualIp::VrfIpPair& key);
    void handleVirtualIpStatus();
    void handleSubnetRoutes();

  private:
    class OrbVirtualIpStatus
        : public Orb::InputReactor<VirtualIpStatusSm, VirtualIp::VirtualIp6Status> {
      public:
        using InputReactor::InputReactor;
        void onAttribute(Orb::AttributeId id, const void* key) override;
    };

    OrbVirtualIpStatus orbVirtualIpStatus_;
};

} // namespace Routing::DirectNet::Ipv6
