#include "directnet/leak/ReceiveRouteLeakSm.h"

#include "directnet/leak/LeakRule.h"
#include "directnet/leak/LeakWalk.h"
#include "directnet/leak/LeakedRoutes.h"
#include "directnet/model/Trace.h"
#include "platform/orb/attribute/DefineType.h"
#include "platform/orb/container/Keys.h"
#include "platform/orb/object/Decision.h"

namespace Routing::DirectNet {

ORB_DEFINE_TYPE(ReceiveRouteLeakSm)
ORB_DEFINE_TYPE(ReceiveRouteLeakSm::OrbLeakedRoute4)
ORB_DEFINE_TYPE(ReceiveRouteLeakSm::OrbLeakedRoute6)
ORB_REGISTER(ReceiveRouteLeakSm, ReceiveRouteLeakSm, unitReceiveRouteLeakSm, 0)

namespace {
DIRECTNET_TRACE_UNIT("ReceiveRouteLeakSm");
} // namespace

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

// The backlogs last: each has a review catch up with what the VRF leaks and what is leaked to it.
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

// --- What changes.

// A source VRF comes without leaks, and goes without: these are told of one by one.
void ReceiveRouteLeakSm::handleSourceVrf(const LeakLocalStatus& status, VrfId sourceVrfId) {
    const Orb::Ptr<const RouteLeakedFromVrf> leaks(status.leakedRouteBySourceVrf(sourceVrfId));
    if (LeakSource* source = intfBacklog(sourceVrfId)) {
        source->handleLeaking();
    }
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

void ReceiveRouteLeakSm::OrbIntfBacklogByVrf::onAttribute(Orb::AttributeId id, const void* key) {
    if (id == IntfBacklogByVrf::intfBacklogAttribute) {
        owner()->handleBacklog(Orb::keyAs<VrfId>(key));
    }
}

void ReceiveRouteLeakSm::handleBacklog(VrfId vrfId) {
    if (IntfBacklog* backlog = intfBacklogByVrf()->intfBacklog(vrfId)) {
        intfBacklogIs(Orb::Ptr<const IntfBacklog>(backlog));
    } else {
        intfBacklogDel(vrfId);
    }
}

void ReceiveRouteLeakSm::handleLeakedPrefix(const RouteLeakedFromVrf& leaks,
                                            const LeakedPrefix& leaked) {
    const Lanx::IpGenPrefix& prefix = leaked.genPrefix();
    if (LeakSource* source = intfBacklog(leaks.sourceVrfId())) {
        source->handlePrefix(prefix);
    }
    handleLeakedRoute(leaks.sourceVrfId(), prefix, crLeakLocalStatus(prefix.af()),
                      leaked.destVrfId());
}

void ReceiveRouteLeakSm::handleLeakedRoute(VrfId sourceVrfId, const Lanx::IpGenPrefix& prefix,
                                           const LeakLocalStatus& leakLocalStatus,
                                           VrfId destVrfId) {
    DIRECTNET_TRACE(8, "source vrf=", sourceVrfId, " dest vrf=", destVrfId, " prefix=", prefix);
    const Orb::Ptr<IntfBacklog> source(intfBacklogByVrf()->intfBacklog(sourceVrfId));
    const Orb::Ptr<IntfIdSet> set(source == nullptr ? nullptr : source->intfIdsByPrefix(prefix));
    if (set == nullptr) {
        return;
    }
    Orb::forEachKey(set->intfIdAndAddr(), [&](const IntfIdAndAddr& contributor) {
        handleContributor(leakLocalStatus, *source, contributor, destVrfId);
    });
}

void ReceiveRouteLeakSm::handleContributor(const IntfBacklog& source,
                                           const Lanx::IpGenPrefix& prefix,
                                           const IntfIdAndAddr& contributor) {
    const Orb::Ptr<const IntfBacklog> keep(&source);
    const LeakLocalStatus& status = crLeakLocalStatus(prefix.af());
    if (const auto* leakedTo = destinations(source.vrfId(), prefix)) {
        for (const VrfId destVrfId : Orb::keysOf(*leakedTo)) {
            handleContributor(status, source, contributor, destVrfId);
        }
    }
}

// --- What is done about it.

bool ReceiveRouteLeakSm::leaks(VrfId sourceVrfId) const {
    return crLeakLocalStatus4()->leakedRouteBySourceVrf(sourceVrfId) != nullptr
           || crLeakLocalStatus6()->leakedRouteBySourceVrf(sourceVrfId) != nullptr;
}

const RouteLeakedFromVrf::DestVrfIds*
ReceiveRouteLeakSm::destinations(VrfId sourceVrfId, const Lanx::IpGenPrefix& prefix) const {
    const LeakLocalStatus& status = crLeakLocalStatus(prefix.af());
    const RouteLeakedFromVrf* leaks = status.leakedRouteBySourceVrf(sourceVrfId);
    return leaks == nullptr ? nullptr : leaks->destVrfId().find(prefix);
}

void ReceiveRouteLeakSm::handleContributor(const LeakLocalStatus& status, const IntfBacklog& source,
                                           const IntfIdAndAddr& contributor, VrfId destVrfId) {
    const Orb::Ptr<IntfBacklog> dest(intfBacklogByVrf()->intfBacklog(destVrfId));
    if (dest == nullptr || !isOwnSubnet(contributor)) {
        return;
    }
    const Lanx::IntfId intfId = contributor.intfId();
    const Lanx::IpGenAddrWithMask& address = contributor.addrWithMask();
    const bool leaked = isLeaked(status, source, contributor, destVrfId);
    if (leaked == hasLeakedRoute(*dest, intfId, address, source.vrfId())) {
        return;
    }
    if (leaked) {
        addLeakedReceiveRoute(intfId, address, source.vrfId(), destVrfId);
    } else {
        delLeakedReceiveRoute(intfId, address, source, *dest);
    }
}

void ReceiveRouteLeakSm::addLeakedReceiveRoute(Lanx::IntfId intfId,
                                               const Lanx::IpGenAddrWithMask& addrWithMask,
                                               VrfId sourceVrfId, VrfId destVrfId) {
    DIRECTNET_TRACE(8, "adding source vrf=", sourceVrfId, " intf=", intfId, " dest vrf=", destVrfId,
                    " address=", addrWithMask, " prefix=", addrWithMask.hostPrefix());
    const Orb::Ptr<IntfBacklog> source(intfBacklogByVrf()->intfBacklog(sourceVrfId));
    const Orb::Ptr<IntfBacklog> dest(intfBacklogByVrf()->intfBacklog(destVrfId));
    if (source != nullptr && dest != nullptr) {
        addLeakedRoute(*dest, intfId, addrWithMask, *source);
    }
}

void ReceiveRouteLeakSm::delLeakedReceiveRoute(Lanx::IntfId intfId,
                                               const Lanx::IpGenAddrWithMask& addrWithMask,
                                               const IntfBacklog& sourceBacklog,
                                               IntfBacklog& destBacklog) {
    DIRECTNET_TRACE(8, "deleting source vrf=", sourceBacklog.vrfId(), " intf=", intfId,
                    " dest vrf=", destBacklog.vrfId(), " address=", addrWithMask,
                    " prefix=", addrWithMask.hostPrefix());
    delLeakedRoute(destBacklog, intfId, addrWithMask, sourceBacklog, *intfViaSetConfig());
}

// --- The review.

void ReceiveRouteLeakSm::scheduleReview() {
    reviewedIpv4Is(false);
    reviewedIpv6Is(false);
    reviewBookmarkIs(SourceVrfPrefix());
    reviewTask()->scheduleTask();
}

// Somebody may run the clock from inside a notification. The decision is finished first.
void ReceiveRouteLeakSm::doReview() {
    if (Orb::decisionUnderWay()) {
        Orb::decideAfterwards(*this, [this] { reviewTask()->scheduleTask(); });
    } else {
        Orb::decide([this] { review(); });
    }
}

void ReceiveRouteLeakSm::review() {
    if (!reviewedIpv4()) {
        reviewedIpv4Is(doReviewCrLeakStatus(*crLeakLocalStatus4()));
    }
    if (reviewedIpv4() && !reviewedIpv6() && !reviewTask()->scheduled()) {
        reviewedIpv6Is(doReviewCrLeakStatus(*crLeakLocalStatus6()));
    }
    DIRECTNET_DUALLOG_IN("ReceiveRouteLeakSm::doReview", 8, "reviewed ipv4=", reviewedIpv4(),
                         ", reviewed ipv6=", reviewedIpv6());
}

bool ReceiveRouteLeakSm::doReviewCrLeakStatus(const LeakLocalStatus& leakLocalStatus) {
    DIRECTNET_TRACE(8, isNowhere(reviewBookmark()) ? " starting at vrf=" : " resuming at vrf=",
                    reviewBookmark().sourceVrfId());
    const Orb::Ptr<Kiln::Task> task = reviewTask();
    std::uint64_t work = 0;
    bool pause = false;
    SourceVrfPrefix next = leakAtOrAfter(leakLocalStatus, reviewBookmark());
    while (!isNowhere(next) && !pause) {
        const SourceVrfPrefix position = next;
        const Lanx::IpGenPrefix& prefix = position.genPrefix();
        if (const auto* leakedTo = destinations(position.sourceVrfId(), prefix)) {
            for (const VrfId destVrfId : Orb::keysOf(*leakedTo)) {
                handleLeakedRoute(position.sourceVrfId(), prefix, leakLocalStatus, destVrfId);
            }
        }
        ++work;
        next = leakAfter(leakLocalStatus, position);
        pause = task->taskShouldYield();
    }
    task->taskWorkCountInc(work);
    if (task->scheduled()) {
        return false; // another review was asked for, which begins at the beginning
    }
    reviewBookmarkIs(next);
    const bool finished = isNowhere(next);
    if (!finished) {
        DIRECTNET_TRACE(8, " suspending at vrf=", next.sourceVrfId());
    }
    if (pause && !(finished && reviewedIpv4())) { // there is more to review: this family or IPv6
        task->scheduleTask();
    }
    return finished;
}

} // namespace Routing::DirectNet
