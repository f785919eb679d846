#include "directnet/leak/LeakedRoutes.h"

#include "platform/orb/value/Assert.h"

namespace Routing::DirectNet {

using Vrf::VrfIdMap::VrfId;

bool hasLeakedRoute(const IntfBacklog& dest, Lanx::IntfId intfId,
                    const Lanx::IpGenAddrWithMask& addrWithMask, VrfId sourceVrfId) {
    const IntfIdSet* set = dest.intfIdsByPrefix(addrWithMask.hostPrefix());
    return set != nullptr
           && set->intfIdAndAddr().find(
                  IntfIdAndAddr(intfId, addrWithMask, sourceVrfId, false, Fib::RouteType::receive))
                  != nullptr;
}

void addLeakedRoute(IntfBacklog& dest, Lanx::IntfId intfId,
                    const Lanx::IpGenAddrWithMask& addrWithMask, const IntfBacklog& source) {
    IntfViaSetKeyStatus& status = *source.intfViaSetKeyStatusFromAf(addrWithMask.af());
    const IntfViaSetKey ivsk = status.intfViaSetKey(intfId);
    ORB_ASSERT(ivsk != IntfViaSetKey(), "ivsk != IntfViaSetKey()");
    status.incIntfVskRefcount(intfId);
    dest.addToIntfIdsByPrefix(intfId, addrWithMask.hostPrefix(), addrWithMask,
                              Fib::RouteType::receive, ivsk.rxViaSetKey(), source.vrfId(), false);
}

void delLeakedRoute(IntfBacklog& dest, Lanx::IntfId intfId,
                    const Lanx::IpGenAddrWithMask& addrWithMask, const IntfBacklog& source,
                    IntfViaSetConfig& config) {
    dest.delFromIntfIdsByPrefix(intfId, addrWithMask.hostPrefix(), addrWithMask,
                                Fib::RouteType::receive, source.vrfId(), false);
    config.releaseViaSetKey(intfId, *source.intfViaSetKeyStatusFromAf(addrWithMask.af()));
}

std::vector<IntfIdAndAddr> leakedRoutes(const IntfBacklog& dest) {
    std::vector<IntfIdAndAddr> leaked;
    for (const auto& set : dest.intfIdsByPrefix()) {
        for (const auto& [contributor, viaSetKey] : set->intfIdAndAddr()) {
            if (contributor.sourceVrfId() != VrfId::invalid()) {
                leaked.push_back(contributor);
            }
        }
    }
    return leaked;
}

} // namespace Routing::DirectNet
