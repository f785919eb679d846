#pragma once

#include <concepts>

#include "platform/lanx/NamespaceName.h"
#include "platform/orb/object/Ptr.h"
#include "platform/orb/value/Name.h"
#include "tables/layout/TablePaths.h"

namespace Arp {
class VirtualIpAsReceiveRoute;
}
namespace Interface {
class AllIntfStatusDir;
class AllIntfStatusLocalDir;
} // namespace Interface
namespace Ip {
class AllVrfStatusLocal;
class Status;
} // namespace Ip
namespace Ip6 {
class Status;
}
namespace Kiln {
class TaskScheduler;
}
namespace Orb {
class Dir;
}
namespace Routing::Rib {
class AllVrfRibReady;
class ViaSetConfig;
} // namespace Routing::Rib
namespace Vaultdb {
class EntityManager;
}
namespace VirtualIp {
class VirtualIp6Status;
class VirtualIpStatus;
} // namespace VirtualIp
namespace Vrf::VrfIdMap {
class NameToIdMapWrapper;
}

namespace Routing::DirectNet {

class GrState;

/// A member that has no default: an initializer that leaves it out does not compile.
template <typename T>
class Required {
  public:
    template <std::convertible_to<T> From>
    Required(const From& value) : value_(value) {}

    operator const T&() const { return value_; }

  private:
    T value_;
};

/// What a host gives to RootSm::RootSmIs. The host owns the inputs and changes them; the library
/// watches them and writes those that are not const. They must outlive the root. `scheduler`,
/// `ipStatus`, `ip6Status`, `virtualIpStatus`, `virtualIp6Status` and `nameToIdMapWrapper` may be
/// null, which is said by giving nullptr: without a scheduler nothing is leaked, without the status
/// of a family it has no addresses.
///
///     RootSm::RootSmIs(RootInputs{.entityManager = tables, .scheduler = nullptr, ...})
struct RootInputs {
    Required<Orb::Ptr<Vaultdb::EntityManager>> entityManager; ///< holds the mounted tables
    Required<Orb::Ptr<Kiln::TaskScheduler>> scheduler;
    Required<Orb::Ptr<Rib::ViaSetConfig>> viaSetConfig;
    Required<Orb::Ptr<const Ip::Status>> ipStatus;
    Required<Orb::Ptr<const Ip6::Status>> ip6Status;
    Required<Orb::Ptr<const VirtualIp::VirtualIpStatus>> virtualIpStatus;
    Required<Orb::Ptr<const VirtualIp::VirtualIp6Status>> virtualIp6Status;
    Required<Orb::Ptr<Arp::VirtualIpAsReceiveRoute>> virtualIpAsReceiveRoute;
    Required<Orb::Ptr<const Vrf::VrfIdMap::NameToIdMapWrapper>> nameToIdMapWrapper;
    Required<Orb::Ptr<const Ip::AllVrfStatusLocal>> allVrfStatusLocal;
    Required<Orb::Ptr<const Interface::AllIntfStatusDir>> allIntfStatusDir;
    Required<Orb::Ptr<const Interface::AllIntfStatusLocalDir>> allIntfStatusLocalDir;
    Required<Orb::Ptr<const Rib::AllVrfRibReady>> allVrfRibReady;
    Required<Orb::Ptr<Orb::Dir>> protoStatusDir;
    Required<Orb::Ptr<const GrState>> grState;
};

/// Where the tables are mounted that the library shares with others.
namespace MountPaths {

// Written: the vias and routes of each family, and the VRFs that they belong to.
using Tables::Paths::ipv4Routes;
using Tables::Paths::ipv4Vias;
using Tables::Paths::ipv6Routes;
using Tables::Paths::ipv6Vias;
using Tables::Paths::vrfs;

// Written through `viaSetConfig`, by a host that mounts its collection here.
using Tables::Paths::viaSets;

// Read: what is leaked between VRFs, and the kernel's devices.
using Tables::Paths::ipv4Leaks;
using Tables::Paths::ipv6Leaks;

/// The devices of a network namespace, whatever bytes its name has.
inline Orb::String kernelDevices(const Lanx::NamespaceName& netNs) {
    return "kni/ns/" + netNs.value() + "/status";
}

} // namespace MountPaths

} // namespace Routing::DirectNet
