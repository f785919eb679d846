#include "directnet/leak/ReceiveRouteLeakSm.h"

#include "directnet/leak/LeakableContributor.h"
#include "directnet/model/Trace.h"
#include "platform/orb/attribute/DefineType.h"
#include "platform/orb/container/Keys.h"
#include "platform/orb/value/Assert.h"

namespace Routing::DirectNet {

ORB_DEFINE_TYPE(ReceiveRouteLeakSm)
ORB_DEFINE_TYPE(ReceiveRouteLeakSm::OrbLeakedRoute4)
ORB_DEFINE_TYPE(ReceiveRouteLeakSm::OrbLeakedRoute6)
ORB_DEFINE_TYPE(ReceiveRouteLeakSm::OrbIntfBacklog)
ORB_DEFINE_TYPE(ReceiveRouteLeakSm::OrbIntfBacklog::OrbIntfIdsByPrefix)
ORB_REGISTER(ReceiveRouteLeakSm, ReceiveRouteLeakSm, unitReceiveRouteLeakSm, 0)

namespace {

DIRECTNET_TRACE_UNIT("ReceiveRouteLeakSm");

IntfIdAndAddr leakedContributor(Lanx::IntfId intfId, const Lanx::IpGenAddrWithMask& addrWithMask,
                                Vrf::VrfIdMap::VrfId sourceVrfId) {
    return {intfId, addrWithMask, sourceVrfId, false, Fib::RouteType::receive};
}

bool hasLeaked(const IntfBacklog& dest, const IntfIdAndAddr& leaked) {
    const IntfIdSet* set = dest.intfIdsByPrefix(leaked.addrWithMask().hostPrefix());
    return set != nullptr && set->intfIdAndAddr().find(leaked) != nullptr;
}

} // namespace

void ReceiveRouteLeakSm::OrbCrLeakLocalStatus::onAttribute(Orb::AttributeId id, const void* key) {
    if (id == LeakLocalStatus::leakedRouteBySourceVrfId) {
        owner()->handleSourceVrf(*notifier(), Orb::keyAs<VrfId>(key));
    }
}

void ReceiveRouteLeakSm::OrbIntfBacklogByVrf::onAttribute(Orb::AttributeId id, const void* key) {
    if (id == IntfBacklogByVrf::intfBacklogId) {
        owner()->handleBacklog(Orb::keyAs<VrfId>(key));
    }
}

ReceiveRouteLeakSm::ReceiveRouteLeakSm(Arguments arguments)
    : arguments_(std::move(arguments)), orbReviewTask_(this), orbCrLeakLocalStatus4_(this),
      orbCrLeakLocalStatus6_(this), orbIntfBacklogByVrf_(this) {
    reviewTaskIs(Orb::makePtr<Kiln::Task>(scheduler(), "ReceiveRouteLeakReview"));
    orbReviewTask_.notifierIs(reviewTask());
    orbCrLeakLocalStatus4_.notifierIs(crLeakLocalStatus4());
    orbCrLeakLocalStatus6_.notifierIs(crLeakLocalStatus6());
    orbIntfBacklogByVrf_.notifierIs(intfBacklogByVrf());
    handleInitialized();
}

void ReceiveRouteLeakSm::handleInitialized() {
    if (initialized()) {
        DIRECTNET_TRACE(8, "already initialized");
        return;
    }
    initializedIs(true);
    for (const auto& leaks : crLeakLocalStatus4()->leakedRouteBySourceVrf()) {
        leakedRoute4Is(leaks);
    }
    for (const auto& leaks : crLeakLocalStatus6()->leakedRouteBySourceVrf()) {
        leakedRoute6Is(leaks);
    }
    for (const auto& backlog : intfBacklogByVrf()->intfBacklog()) {
        intfBacklogIs(backlog);
    }
}

ReceiveRouteLeakSm::~ReceiveRouteLeakSm() {
    orbDoZombieReactors(true);
    leakedRoute4DelAll();
    leakedRoute6DelAll();
    intfBacklogDelAll();
}

void ReceiveRouteLeakSm::handleSourceVrf(const LeakLocalStatus& status, VrfId sourceVrfId) {
    const Orb::Ptr<const RouteLeakedFromVrf> leaks(status.leakedRouteBySourceVrf(sourceVrfId));
    const bool ipv4 = &status == crLeakLocalStatus4().get();
    if (leaks != nullptr && ipv4) {
        leakedRoute4Is(leaks);
    } else if (leaks != nullptr) {
        leakedRoute6Is(leaks);
    } else if (ipv4) {
        leakedRoute4Del(sourceVrfId);
    } else {
        leakedRoute6Del(sourceVrfId);
    }
}

void ReceiveRouteLeakSm::handleBacklog(VrfId vrfId) {
    if (IntfBacklog* backlog = intfBacklogByVrf()->intfBacklog(vrfId)) {
        intfBacklogIs(Orb::Ptr<const IntfBacklog>(backlog));
    } else {
        intfBacklogDel(vrfId);
    }
}

const RouteLeakedFromVrf::DestVrfIds*
ReceiveRouteLeakSm::destinations(VrfId sourceVrfId, const Lanx::IpGenPrefix& prefix) const {
    const LeakLocalStatus& status = crLeakLocalStatus(prefix.af());
    const RouteLeakedFromVrf* leaks = status.leakedRouteBySourceVrf(sourceVrfId);
    return leaks == nullptr ? nullptr : leaks->destVrfId().find(prefix);
}

void ReceiveRouteLeakSm::handleLeakedRoute(VrfId sourceVrfId, const Lanx::IpGenPrefix& prefix,
                                           const LeakLocalStatus& leakLocalStatus,
                                           VrfId destVrfId) {
    DIRECTNET_TRACE(8, "source vrf=", sourceVrfId, " dest vrf=", destVrfId, " prefix=", prefix);
    const Orb::Ptr<IntfBacklog> source(intfBacklogByVrf()->intfBacklog(sourceVrfId));
    const Orb::Ptr<IntfBacklog> dest(intfBacklogByVrf()->intfBacklog(destVrfId));
    if (source == nullptr || dest == nullptr) {
        return;
    }
    const Orb::Ptr<IntfIdSet> set(source->intfIdsByPrefix(prefix));
    if (set == nullptr) {
        return;
    }
    const RouteLeakedFromVrf* leaks = leakLocalStatus.leakedRouteBySourceVrf(sourceVrfId);
    const bool leaked = leaks != nullptr && leaks->leaks(prefix, destVrfId);
    Orb::forEachKey(set->intfIdAndAddr(), [&](const IntfIdAndAddr& entry) {
        if (!isLocalConnected(entry)) {
            return;
        }
        if (leaked) {
            handleContributor(*source, *set, entry, destVrfId);
        } else {
            delLeakedReceiveRoute(entry.intfId(), entry.addrWithMask(), *source, *dest);
        }
    });
}

// An address may contribute twice, as the interface's own and as a virtual one: its route stays
// while either counts.
void ReceiveRouteLeakSm::handleContributor(const IntfBacklog& source, const IntfIdSet& set,
                                           const IntfIdAndAddr& contributor, VrfId destVrfId) {
    const Lanx::IntfId intfId = contributor.intfId();
    const Lanx::IpGenAddrWithMask addrWithMask = contributor.addrWithMask();
    const Orb::Ptr<IntfBacklog> dest(intfBacklogByVrf()->intfBacklog(destVrfId));
    if (dest == nullptr) {
        return;
    }
    const bool leaked = hasLeaked(*dest, leakedContributor(intfId, addrWithMask, source.vrfId()));
    const bool counts = countsForLeaks(source, set, contributor);
    if (!counts && contributor.isVirtual()) {
        DIRECTNET_TRACE(8, "skipping virtual address=", addrWithMask, " intf=", intfId,
                        " without via sets of its own");
    }
    if (counts && !leaked) {
        addLeakedReceiveRoute(intfId, addrWithMask, source.vrfId(), destVrfId);
    } else if (!counts && leaked) {
        delLeakedReceiveRoute(intfId, addrWithMask, source, *dest);
    }
}

void ReceiveRouteLeakSm::addLeakedReceiveRoute(Lanx::IntfId intfId,
                                               const Lanx::IpGenAddrWithMask& addrWithMask,
                                               VrfId sourceVrfId, VrfId destVrfId) {
    const Lanx::IpGenPrefix prefix = addrWithMask.hostPrefix();
    DIRECTNET_TRACE(8, "adding source vrf=", sourceVrfId, " intf=", intfId, " dest vrf=", destVrfId,
                    " address=", addrWithMask, " prefix=", prefix);
    const Orb::Ptr<IntfBacklog> source(intfBacklogByVrf()->intfBacklog(sourceVrfId));
    const Orb::Ptr<IntfBacklog> dest(intfBacklogByVrf()->intfBacklog(destVrfId));
    if (source == nullptr || dest == nullptr || source->closing()
        || hasLeaked(*dest, leakedContributor(intfId, addrWithMask, sourceVrfId))) {
        return;
    }
    IntfViaSetKeyStatus& status = *source->intfViaSetKeyStatusFromAf(addrWithMask.af());
    const IntfViaSetKey ivsk = status.intfViaSetKey(intfId);
    ORB_ASSERT(ivsk != IntfViaSetKey(), "ivsk != IntfViaSetKey()");
    status.incIntfVskRefcount(intfId);
    dest->addToIntfIdsByPrefix(intfId, prefix, addrWithMask, Fib::RouteType::receive,
                               ivsk.rxViaSetKey(), sourceVrfId, false);
}

void ReceiveRouteLeakSm::delLeakedReceiveRoute(Lanx::IntfId intfId,
                                               const Lanx::IpGenAddrWithMask& addrWithMask,
                                               const IntfBacklog& sourceBacklog,
                                               IntfBacklog& destBacklog) {
    const VrfId sourceVrfId = sourceBacklog.vrfId();
    const Lanx::IpGenPrefix prefix = addrWithMask.hostPrefix();
    DIRECTNET_TRACE(8, "deleting source vrf=", sourceVrfId, " intf=", intfId,
                    " dest vrf=", destBacklog.vrfId(), " address=", addrWithMask,
                    " prefix=", prefix);
    if (!hasLeaked(destBacklog, leakedContributor(intfId, addrWithMask, sourceVrfId))) {
        return;
    }
    destBacklog.delFromIntfIdsByPrefix(intfId, prefix, addrWithMask, Fib::RouteType::receive,
                                       sourceVrfId, false);
    intfViaSetConfig()->releaseViaSetKey(
        intfId, *sourceBacklog.intfViaSetKeyStatusFromAf(addrWithMask.af()));
}

} // namespace Routing::DirectNet
