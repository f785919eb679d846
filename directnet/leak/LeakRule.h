#pragma once

#include "directnet/backlog/IntfBacklog.h"
#include "platform/routing/DirectNetLeakLocalStatus.h"

/// When is an address leaked? This is the one place that answers it; everybody else asks here and
/// brings the destination's routes in line (ReceiveRouteLeakSm::handleContributor).
///
/// An address of an interface is leaked from one VRF, the source, to another, the destination,
/// exactly while
///
///  - the leak status lists the destination for the address's subnet;
///  - the address contributes that subnet to the source's prefix index, as a subnet of the source's
///    own: what was leaked to a VRF and host routes are not leaked on;
///  - it does so as an address of the interface, or as a virtual one while the interface has other
///    addresses of the family of its own: their via sets are what the leaked route goes through;
///  - the source is not being taken down: its via sets are gone then.
namespace Routing::DirectNet {

/// Whether the contributor's prefix is a subnet of the VRF's own.
inline bool isOwnSubnet(const IntfIdAndAddr& contributor) {
    return contributor.routeType() == Fib::RouteType::connected
           && contributor.sourceVrfId() == Vrf::VrfIdMap::VrfId::invalid();
}

/// Whether the contributor's address is leaked from the source to the destination now. `status` is
/// that of the address's family. The contributor may have gone already, and the address may still
/// contribute as another one: as the interface's own and as a virtual address.
bool isLeaked(const DirectNetLeakLocalStatus& status, const IntfBacklog& source,
              const IntfIdAndAddr& contributor, Vrf::VrfIdMap::VrfId destVrfId);

} // namespace Routing::DirectNet
