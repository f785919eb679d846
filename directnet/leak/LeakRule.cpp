#include "directnet/leak/LeakRule.h"

#include "directnet/model/Trace.h"

namespace Routing::DirectNet {

namespace {

DIRECTNET_TRACE_UNIT("LeakRule");

/// Whether the contributor's address contributes its subnet, as a virtual address or not.
bool contributes(const IntfIdSet& set, const IntfIdAndAddr& contributor, bool isVirtual) {
    return set.intfIdAndAddr().find(IntfIdAndAddr(contributor.intfId(), contributor.addrWithMask(),
                                                  contributor.sourceVrfId(), isVirtual,
                                                  contributor.routeType()))
           != nullptr;
}

} // namespace

bool isLeaked(const DirectNetLeakLocalStatus& status, const IntfBacklog& source,
              const IntfIdAndAddr& contributor, Vrf::VrfIdMap::VrfId destVrfId) {
    const Lanx::IpGenAddrWithMask& address = contributor.addrWithMask();
    const Lanx::IpGenPrefix subnet = address.subnet();
    const RouteLeakedFromVrf* leaks = status.leakedRouteBySourceVrf(source.vrfId());
    const IntfIdSet* set = source.intfIdsByPrefix(subnet);
    const bool sourceGoes = source.closing() || source.orbMarkedForDeletion();
    if (sourceGoes || leaks == nullptr || set == nullptr || !isOwnSubnet(contributor)
        || !leaks->leaks(subnet, destVrfId)) {
        return false;
    }
    if (contributes(*set, contributor, false)) {
        return true;
    }
    if (!contributes(*set, contributor, true)) {
        return false;
    }
    const auto& own = source.intfViaSetKeyStatusFromAf(address.af())->ownAddressesByIntfId();
    if (!own.contains(contributor.intfId())) {
        DIRECTNET_TRACE(8, "skipping virtual address=", address, " intf=", contributor.intfId(),
                        " without via sets of its own");
        return false;
    }
    return true;
}

} // namespace Routing::DirectNet
