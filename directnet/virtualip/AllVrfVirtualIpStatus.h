#pragma once

#include "directnet/virtualip/VrfVirtualIpStatus.h"

namespace Routing::DirectNet::Ipv4 {

/// The IPv4 virtual addresses of all VRFs: one table each. When it is released the tables go one by
/// one, for whoever follows them.
class AllVrfVirtualIpStatus : public Orb::Entity {
    ORB_ENTITY(AllVrfVirtualIpStatus, "Routing::DirectNet::Ipv4::AllVrfVirtualIpStatus")
    ORB_NO_CONSTRUCTOR(AllVrfVirtualIpStatus)
    ORB_CHILDREN(258, VrfVirtualIpStatus, vrfVirtualIpStatus)

  public:
    void orbDoZombieReactors(bool zombie) override {
        Orb::Entity::orbDoZombieReactors(zombie);
        if (zombie) {
            vrfVirtualIpStatusDelAll();
        }
    }
};

} // namespace Routing::DirectNet::Ipv4

namespace Routing::DirectNet::Ipv6 {

/// The IPv6 virtual addresses of all VRFs: one table each. When it is released the tables go one by
/// one, for whoever follows them.
class AllVrfVirtualIpStatus : public Orb::Entity {
    ORB_ENTITY(AllVrfVirtualIpStatus, "Routing::DirectNet::Ipv6::AllVrfVirtualIpStatus")
    ORB_NO_CONSTRUCTOR(AllVrfVirtualIpStatus)
    ORB_CHILDREN(258, VrfVirtualIpStatus, vrfVirtualIpStatus)

  public:
    void orbDoZombieReactors(bool zombie) override {
        Orb::Entity::orbDoZombieReactors(zombie);
        if (zombie) {
            vrfVirtualIpStatusDelAll();
        }
    }
};

} // namespace Routing::DirectNet::Ipv6
