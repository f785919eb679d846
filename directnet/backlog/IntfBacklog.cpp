#include "directnet/backlog/IntfBacklog.h"

#include "directnet/model/Trace.h"
#include "directnet/model/Units.h"
#include "platform/orb/attribute/DefineType.h"

namespace Routing::DirectNet {

ORB_DEFINE_TYPE(IntfBacklog)
ORB_REGISTER_VALUE(IntfIdAndPrefix, IntfIdAndPrefix, unitIntfBacklog, 0)
ORB_REGISTER_VALUE(IntfViaSetKey, IntfViaSetKey, unitIntfBacklog, 1)
ORB_REGISTER(IntfBacklog, IntfBacklog, unitIntfBacklog, 2)
ORB_REGISTER_VALUE(IntfIdAndAddr, IntfIdAndAddr, unitIntfBacklog, 5)

namespace {

DIRECTNET_TRACE_UNIT("IntfBacklog");

bool isRoutable(const Lanx::IpGenPrefix& prefix) {
    return prefix.af() != Lanx::AddressFamily::unset && prefix.len() != 0;
}

} // namespace

IntfBacklog::IntfBacklog(Arguments arguments) : arguments_(std::move(arguments)) {
    handleInitialized();
}

void IntfBacklog::handleInitialized() {
    if (intfViaSetKeyStatus4() != nullptr) {
        DIRECTNET_TRACE(8, "[", *this, "] already initialized");
        return;
    }
    intfViaSetKeyStatus4Is(Lanx::AddressFamily::ipv4);
    intfViaSetKeyStatus6Is(Lanx::AddressFamily::ipv6);
}

void IntfBacklog::doAddBacklog(Lanx::IntfId intfId, const Lanx::IpGenPrefix& prefix) {
    DIRECTNET_TRACE(9, "[", *this, "] intf=", intfId, " pfx=", prefix);
    const IntfIdAndPrefix member(intfId, prefix);
    if (processing_ != nullptr && processing_->member_ == member) {
        processing_->queuedAgain_ = true;
    }
    backlogIs(member, true);
}

void IntfBacklog::addToIntfIdsByPrefix(Lanx::IntfId intfId, const Lanx::IpGenPrefix& prefix,
                                       const Lanx::IpGenAddrWithMask& addrWithMask,
                                       Fib::RouteType routeType, Rib::ViaSetKey viaSetKey,
                                       VrfId sourceVrfId, bool isVirtual) {
    if (!isRoutable(prefix)) {
        return;
    }
    DIRECTNET_TRACE(9, "[", *this, "] pfx=", prefix, " addr=", addrWithMask, " ", routeType,
                    " viaSetKey=", viaSetKey);
    Orb::Ptr<IntfIdSet> set(intfIdsByPrefix(prefix));
    if (set == nullptr) {
        set = intfIdSetFactory(prefix);
        intfIdsByPrefixIs(set);
    }
    set->intfIdAndAddrIs(IntfIdAndAddr(intfId, addrWithMask, sourceVrfId, isVirtual, routeType),
                         viaSetKey);
    doAddBacklog(intfId, prefix);
}

// A large VRF's index and backlog are not in the processor's caches. Fetched one after the other,
// the places of an address's prefixes would take most of the time.
void IntfBacklog::fetchAhead(Lanx::IntfId intfId, Contributions contributions) const {
    for (const Contribution& contribution : contributions) {
        intfIdsByPrefix().prefetch(contribution.prefix);
        backlog().prefetch(IntfIdAndPrefix(intfId, contribution.prefix));
    }
}

void IntfBacklog::addToIntfIdsByPrefix(const IntfViaSetKey& viaSets,
                                       const Lanx::IpGenAddrWithMask& addrWithMask,
                                       Contributions contributions, bool isVirtual) {
    fetchAhead(viaSets.intfId(), contributions);
    for (const auto& [prefix, kind] : contributions) {
        addToIntfIdsByPrefix(viaSets.intfId(), prefix, addrWithMask, kind.type,
                             (viaSets.*kind.viaSet.key)(), VrfId::invalid(), isVirtual);
    }
}

void IntfBacklog::delFromIntfIdsByPrefix(Lanx::IntfId intfId, const Lanx::IpGenPrefix& prefix,
                                         const Lanx::IpGenAddrWithMask& addrWithMask,
                                         Fib::RouteType routeType, VrfId sourceVrfId,
                                         bool isVirtual) {
    if (!isRoutable(prefix)) {
        return;
    }
    IntfIdSet* set = intfIdsByPrefix(prefix);
    if (set == nullptr) {
        return;
    }
    const IntfIdAndAddr contributor(intfId, addrWithMask, sourceVrfId, isVirtual, routeType);
    if (set->intfIdAndAddr(contributor) == Rib::ViaSetKey()) {
        return;
    }
    const Orb::Ptr<IntfIdSet> keep(set);
    const Lanx::IpGenPrefix stable = prefix; // the caller's may be the set's own
    set->intfIdAndAddrDel(contributor);
    // Queued before an emptied set leaves the index: the drain then finds no set and deletes.
    doAddBacklog(intfId, stable);
    if (set->intfIdAndAddrs() == 0) {
        intfIdsByPrefixDel(stable);
    }
}

void IntfBacklog::delFromIntfIdsByPrefix(Lanx::IntfId intfId,
                                         const Lanx::IpGenAddrWithMask& addrWithMask,
                                         Contributions contributions, bool isVirtual) {
    fetchAhead(intfId, contributions);
    for (const auto& [prefix, kind] : contributions) {
        delFromIntfIdsByPrefix(intfId, prefix, addrWithMask, kind.type, VrfId::invalid(),
                               isVirtual);
    }
}

void IntfBacklog::waitForRoom() {
    if (waitingForRoom() == 0) {
        DIRECTNET_DUALLOG(0, "Tables are full, routes wait for room in vrf : ", vrfName());
    }
    waitingForRoomIs(waitingForRoom() + 1);
}

void IntfBacklog::endWaitForRoom() {
    waitingForRoomIs(waitingForRoom() - 1);
    if (waitingForRoom() == 0 && backlog().empty()) {
        backlogEmptyInc(1); // no drain was needed, which would have counted
    }
}

const Orb::Ptr<IntfViaSetKeyStatus>&
IntfBacklog::intfViaSetKeyStatusFromAf(Lanx::AddressFamily af) const {
    return af == Lanx::AddressFamily::ipv4 ? intfViaSetKeyStatus4() : intfViaSetKeyStatus6();
}

} // namespace Routing::DirectNet
