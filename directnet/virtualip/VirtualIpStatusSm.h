#pragma once

#include <utility>

#include "directnet/virtualip/VrfVirtualIpStatusHelper.h"

namespace Routing::DirectNet {

/// What VirtualIpStatusSm is made from and has in a family.
template <typename Family>
class VirtualIpStatusDeclarations;

template <>
class VirtualIpStatusDeclarations<Traits::IPv4> : public Orb::Entity {
    ORB_ENTITY(VirtualIpStatusDeclarations, "Routing::DirectNet::Ipv4::VirtualIpStatusSm")
    ORB_CONSTRUCTOR((Orb::Ptr<const VirtualIp::VirtualIpStatus>, virtualIpStatus),
                    (Orb::Ptr<Ipv4::VrfVirtualIpStatusHelper>, vrfVirtualIpStatusHelper))
    ORB_ATTRIBUTE(260, bool, initialized)

  protected:
    explicit VirtualIpStatusDeclarations(Arguments arguments) : arguments_(std::move(arguments)) {}
};

template <>
class VirtualIpStatusDeclarations<Traits::IPv6> : public Orb::Entity {
    ORB_ENTITY(VirtualIpStatusDeclarations, "Routing::DirectNet::Ipv6::VirtualIpStatusSm")
    ORB_CONSTRUCTOR((Orb::Ptr<const VirtualIp::VirtualIp6Status>, virtualIpStatus),
                    (Orb::Ptr<Ipv6::VrfVirtualIpStatusHelper>, vrfVirtualIpStatusHelper))
    /// On purpose without effect: IPv6 virtual addresses never yield subnets.
    ORB_ATTRIBUTE(260, bool, subnetRouteEnabled)
    ORB_ATTRIBUTE(261, bool, initialized)

  protected:
    explicit VirtualIpStatusDeclarations(Arguments arguments) : arguments_(std::move(arguments)) {}
};

/// Sorts the platform's flat collection of virtual addresses of one family into the tables of their
/// VRFs and, for IPv4, hands the platform's subnet-route setting on to every table. Makes no
/// routes: the machine of each VRF does, see VrfVirtualIpStatusSm.
template <typename Family>
class VirtualIpStatusSm : public VirtualIpStatusDeclarations<Family> {
  public:
    using Declarations = VirtualIpStatusDeclarations<Family>;
    using Virtual = VirtualIpTraits<Family>;
    using Key = typename Virtual::Key;
    using typename Declarations::Arguments;

    explicit VirtualIpStatusSm(Arguments arguments);
    ~VirtualIpStatusSm() override;

    void handleInitialized();
    void handleVirtualIpStatus(const Key& key);
    void handleVirtualIpStatus();
    void handleSubnetRoutes();

  private:
    class OrbVirtualIpStatus
        : public Orb::InputReactor<VirtualIpStatusSm, typename Virtual::Status> {
      public:
        using Reactor = Orb::InputReactor<VirtualIpStatusSm, typename Virtual::Status>;
        using Reactor::Reactor;
        void onAttribute(Orb::AttributeId id, const void* key) override;
        void notifierIs(Orb::Ptr<const typename Virtual::Status> status) override;
    };

    OrbVirtualIpStatus orbVirtualIpStatus_;
};

namespace Ipv4 {
using VirtualIpStatusSm = DirectNet::VirtualIpStatusSm<Traits::IPv4>;
}
namespace Ipv6 {
using VirtualIpStatusSm = DirectNet::VirtualIpStatusSm<Traits::IPv6>;
}

extern template class VirtualIpStatusSm<Traits::IPv4>;
extern template class VirtualIpStatusSm<Traits::IPv6>;

} // namespace Routing::DirectNet
