#pragma once

#include "directnet/backlog/IntfBacklog.h"

namespace Routing::DirectNet {

/// Only a VRF's own subnets are leaked on: not what was leaked to it, not host routes.
inline bool isLocalConnected(const IntfIdAndAddr& entry) {
    return entry.routeType() == Fib::RouteType::connected
           && entry.sourceVrfId() == Vrf::VrfIdMap::VrfId::invalid();
}

/// Whether a contributor's address is to be leaked: it contributes as an address of the interface,
/// or as a virtual one of an interface with addresses of its own, whose via sets a leaked route
/// then goes through.
inline bool countsForLeaks(const IntfBacklog& source, const IntfIdSet& set,
                           const IntfIdAndAddr& contributor) {
    const auto contributes = [&](bool isVirtual) {
        return set.intfIdAndAddr().find(
                   IntfIdAndAddr(contributor.intfId(), contributor.addrWithMask(),
                                 contributor.sourceVrfId(), isVirtual, contributor.routeType()))
               != nullptr;
    };
    if (contributes(false)) {
        return true;
    }
    const auto af = contributor.addrWithMask().af();
    return contributes(true)
           && source.intfViaSetKeyStatusFromAf(af)->ownAddressesByIntfId().contains(
               contributor.intfId());
}

} // namespace Routing::DirectNet
