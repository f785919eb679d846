#pragma once

#include "directnet/virtualip/VrfVirtualIpStatus.h"

namespace Routing::DirectNet {

/// The virtual addresses of all VRFs in one family: one table each. When it is released the tables
/// go one by one, for whoever follows them.
template <typename Family>
class AllVrfVirtualIpStatus : public Orb::Entity {
    using Table = VrfVirtualIpStatus<Family>;

    ORB_ENTITY(AllVrfVirtualIpStatus, VirtualIpTraits<Family>::tablesName)
    ORB_NO_CONSTRUCTOR(AllVrfVirtualIpStatus)
    ORB_CHILDREN(258, typename AllVrfVirtualIpStatus::Table, vrfVirtualIpStatus)

  public:
    void orbDoZombieReactors(bool zombie) override {
        Orb::Entity::orbDoZombieReactors(zombie);
        if (zombie) {
            vrfVirtualIpStatusDelAll();
        }
    }
};

namespace Ipv4 {
using AllVrfVirtualIpStatus = DirectNet::AllVrfVirtualIpStatus<Traits::IPv4>;
}
namespace Ipv6 {
using AllVrfVirtualIpStatus = DirectNet::AllVrfVirtualIpStatus<Traits::IPv6>;
}

extern template class AllVrfVirtualIpStatus<Traits::IPv4>;
extern template class AllVrfVirtualIpStatus<Traits::IPv6>;

} // namespace Routing::DirectNet
