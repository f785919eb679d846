#include "directnet/backlog/IntfBacklog.h"

#include <array>

#include "directnet/model/Trace.h"
#include "directnet/model/Units.h"
#include "platform/orb/attribute/DefineType.h"
#include "platform/orb/value/Assert.h"

namespace Routing::DirectNet {

ORB_DEFINE_TYPE(IntfBacklog)
ORB_REGISTER_VALUE(IntfIdAndPrefix, IntfIdAndPrefix, unitIntfBacklog, 0)
ORB_REGISTER_VALUE(IntfViaSetKey, IntfViaSetKey, unitIntfBacklog, 1)
ORB_REGISTER(IntfBacklog, IntfBacklog, unitIntfBacklog, 2)
ORB_REGISTER_VALUE(IntfIdAndAddr, IntfIdAndAddr, unitIntfBacklog, 5)

namespace {

DIRECTNET_TRACE_UNIT("IntfBacklog");

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
    const IntfIdAndPrefix member(intfId, prefix);
    queue(member, Orb::HashTag::of(member));
}

void IntfBacklog::queue(const IntfIdAndPrefix& member, Orb::HashTag tag) {
    DIRECTNET_TRACE_IN("IntfBacklog::doAddBacklog", 9, "[", *this, "] intf=", member.intfId(),
                       " pfx=", member.genPrefix());
    if (processing_ != nullptr && processing_->member_ == member) {
        processing_->queuedAgain_ = true;
    }
    backlogIs(member, true, tag);
}

void IntfBacklog::addToIntfIdsByPrefix(Lanx::IntfId intfId, const Lanx::IpGenPrefix& prefix,
                                       const Lanx::IpGenAddrWithMask& addrWithMask,
                                       Fib::RouteType routeType, Rib::ViaSetKey viaSetKey,
                                       VrfId sourceVrfId, bool isVirtual) {
    add(prefix, IntfIdAndAddr(intfId, addrWithMask, sourceVrfId, isVirtual, routeType), viaSetKey,
        tagsOf(intfId, prefix));
}

void IntfBacklog::add(const Lanx::IpGenPrefix& prefix, const IntfIdAndAddr& contributor,
                      Rib::ViaSetKey viaSetKey, const Tags& tags) {
    if (!isRoutable(prefix)) {
        return;
    }
    DIRECTNET_TRACE_IN("IntfBacklog::addToIntfIdsByPrefix", 9, "[", *this, "] pfx=", prefix,
                       " addr=", contributor.addrWithMask(), " ", contributor.routeType(),
                       " viaSetKey=", viaSetKey);
    const Orb::Ptr<IntfIdSet> set =
        intfIdsByPrefixOrMade(prefix, tags.prefix, [&] { return intfIdSetFactory(prefix); });
    set->intfIdAndAddrIs(contributor, viaSetKey);
    queue(IntfIdAndPrefix(contributor.intfId(), prefix), tags.member);
}

// A large VRF's index and backlog are not in the processor's caches. Fetched one after the other,
// the places of an address's prefixes would take most of the time.
template <typename Visit>
void IntfBacklog::forEachAhead(Lanx::IntfId intfId, Contributions contributions,
                               Visit visit) const {
    ORB_ASSERT(contributions.size() <= maxContributions, "contributions <= maxContributions");
    std::array<Tags, maxContributions> tags;
    Tags* end = tags.data();
    for (const Contribution& contribution : contributions) {
        *end = tagsOf(intfId, contribution.prefix);
        intfIdsByPrefix().prefetch(end->prefix);
        backlog().prefetch(end->member);
        ++end;
    }
    for (const Tags* ahead = tags.data(); ahead != end; ++ahead) {
        intfIdsByPrefix_.prefetchSet(ahead->prefix);
    }
    const Tags* next = tags.data();
    for (const Contribution& contribution : contributions) {
        visit(contribution, *next++);
    }
}

void IntfBacklog::addToIntfIdsByPrefix(const IntfViaSetKey& viaSets,
                                       const Lanx::IpGenAddrWithMask& addrWithMask,
                                       Contributions contributions, bool isVirtual) {
    const Lanx::IntfId intfId = viaSets.intfId();
    forEachAhead(intfId, contributions, [&](const Contribution& contribution, const Tags& tags) {
        const RouteKind& kind = contribution.kind;
        add(contribution.prefix,
            IntfIdAndAddr(intfId, addrWithMask, VrfId::invalid(), isVirtual, kind.type),
            (viaSets.*kind.viaSet.key)(), tags);
    });
}

void IntfBacklog::delFromIntfIdsByPrefix(Lanx::IntfId intfId, const Lanx::IpGenPrefix& prefix,
                                         const Lanx::IpGenAddrWithMask& addrWithMask,
                                         Fib::RouteType routeType, VrfId sourceVrfId,
                                         bool isVirtual) {
    del(prefix, IntfIdAndAddr(intfId, addrWithMask, sourceVrfId, isVirtual, routeType),
        tagsOf(intfId, prefix));
}

void IntfBacklog::del(const Lanx::IpGenPrefix& prefix, const IntfIdAndAddr& contributor,
                      const Tags& tags) {
    if (!isRoutable(prefix)) {
        return;
    }
    IntfIdSet* set = intfIdsByPrefix(prefix, tags.prefix);
    if (set == nullptr || set->intfIdAndAddr(contributor) == Rib::ViaSetKey()) {
        return;
    }
    const Orb::Ptr<IntfIdSet> keep(set);
    const IntfIdAndPrefix member(contributor.intfId(), prefix); // the caller's may be the set's own
    set->intfIdAndAddrDel(contributor);
    // Queued before an emptied set leaves the index: the drain then finds no set and deletes.
    queue(member, tags.member);
    if (set->intfIdAndAddrs() == 0) {
        intfIdsByPrefixDel(member.genPrefix(), tags.prefix);
    }
}

void IntfBacklog::delFromIntfIdsByPrefix(Lanx::IntfId intfId,
                                         const Lanx::IpGenAddrWithMask& addrWithMask,
                                         Contributions contributions, bool isVirtual) {
    forEachAhead(intfId, contributions, [&](const Contribution& contribution, const Tags& tags) {
        del(contribution.prefix,
            IntfIdAndAddr(intfId, addrWithMask, VrfId::invalid(), isVirtual,
                          contribution.kind.type),
            tags);
    });
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
