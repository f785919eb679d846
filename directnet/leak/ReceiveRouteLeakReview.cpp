// The review of everything that is leaked, in runs that yield.

#include "directnet/leak/ReceiveRouteLeakSm.h"
#include "directnet/model/Trace.h"
#include "platform/orb/container/Keys.h"
#include "platform/orb/object/Decision.h"

namespace Routing::DirectNet {

namespace {

DIRECTNET_TRACE_UNIT("ReceiveRouteLeakSm");

using Sources = Orb::Children<RouteLeakedFromVrf>::Map;

/// The first leaked prefix of the source VRF at `source` or of one behind it; empty at the end.
template <typename Source>
SourceVrfPrefix firstFrom(const Sources& sources, const Source* source) {
    while (source != nullptr && (*source)->destVrfId().empty()) {
        source = sources.after((*source)->sourceVrfId());
    }
    return source == nullptr
               ? SourceVrfPrefix()
               : SourceVrfPrefix((*source)->sourceVrfId(), (*source)->destVrfId().first()->key());
}

bool isEnd(const SourceVrfPrefix& position) {
    return position.sourceVrfId() == Vrf::VrfIdMap::VrfId::invalid();
}

} // namespace

void ReceiveRouteLeakSm::scheduleReview() {
    reviewedIpv4Is(false);
    reviewedIpv6Is(false);
    reviewBookmarkIs(SourceVrfPrefix());
    reviewTask()->scheduleTask();
}

// Who runs the clock from inside a notification does not have a review in the middle of a decision.
void ReceiveRouteLeakSm::doReview() {
    if (Orb::decisionUnderWay()) {
        reviewTask()->scheduleTask();
    } else {
        Orb::decide([this] { review(); });
    }
}

void ReceiveRouteLeakSm::review() {
    if (!reviewedIpv4() && doReviewCrLeakStatus(*crLeakLocalStatus4())) {
        reviewedIpv4Is(true);
        if (pauseAfterPass_) {
            reviewTask()->scheduleTask();
        }
    }
    if (reviewedIpv4() && !reviewTask()->scheduled() && !reviewedIpv6()) {
        reviewedIpv6Is(doReviewCrLeakStatus(*crLeakLocalStatus6()));
    }
    DIRECTNET_DUALLOG_IN("ReceiveRouteLeakSm::doReview", 8, "reviewed ipv4=", reviewedIpv4(),
                         ", reviewed ipv6=", reviewedIpv6());
}

bool ReceiveRouteLeakSm::doReviewCrLeakStatus(const LeakLocalStatus& leakLocalStatus) {
    if (isEnd(reviewBookmark())) {
        DIRECTNET_TRACE(8, " starting at vrf=", reviewBookmark().sourceVrfId());
    } else {
        DIRECTNET_TRACE(8, " resuming at vrf=", reviewBookmark().sourceVrfId());
    }
    const Orb::Ptr<Kiln::Task> task = reviewTask();
    std::uint64_t work = 0;
    bool pause = false;
    SourceVrfPrefix next = reviewStart(leakLocalStatus);
    while (!isEnd(next) && !pause) {
        const SourceVrfPrefix position = next;
        if (const auto* leaks = leakLocalStatus.leakedRouteBySourceVrf(position.sourceVrfId())) {
            reviewPrefix(*leaks, position.genPrefix(), leakLocalStatus);
        }
        ++work;
        Orb::pauseBetweenDecisions();
        if (task->scheduled() || orbMarkedForDeletion()) {
            task->taskWorkCountInc(work);
            return false; // another review begins at the beginning
        }
        next = reviewNext(leakLocalStatus, position);
        pause = task->taskShouldYield();
    }
    task->taskWorkCountInc(work);
    reviewBookmarkIs(next);
    pauseAfterPass_ = pause && isEnd(next);
    if (isEnd(next)) {
        return true;
    }
    DIRECTNET_TRACE(8, " suspending at vrf=", next.sourceVrfId());
    task->scheduleTask();
    return false;
}

void ReceiveRouteLeakSm::reviewPrefix(const RouteLeakedFromVrf& leaks,
                                      const Lanx::IpGenPrefix& prefix,
                                      const LeakLocalStatus& leakLocalStatus) {
    const VrfId sourceVrfId = leaks.sourceVrfId();
    if (const auto* destinations = leaks.destVrfId().find(prefix)) {
        for (const VrfId destVrfId : Orb::keysOf(*destinations)) {
            handleLeakedRoute(sourceVrfId, prefix, leakLocalStatus, destVrfId);
        }
    }
}

// The bookmark names the next position to visit. If that is gone by now, the walk goes on at its
// hash position.
SourceVrfPrefix ReceiveRouteLeakSm::reviewStart(const LeakLocalStatus& leakLocalStatus) const {
    const SourceVrfPrefix bookmark = reviewBookmark();
    const auto& sources = leakLocalStatus.leakedRouteBySourceVrf();
    if (isEnd(bookmark)) {
        return firstFrom(sources, sources.first());
    }
    if (const auto* leaks = leakLocalStatus.leakedRouteBySourceVrf(bookmark.sourceVrfId())) {
        if (const auto* entry = leaks->destVrfId().atOrAfter(bookmark.genPrefix())) {
            return {bookmark.sourceVrfId(), entry->key()};
        }
    }
    return firstFrom(sources, sources.after(bookmark.sourceVrfId()));
}

SourceVrfPrefix ReceiveRouteLeakSm::reviewNext(const LeakLocalStatus& leakLocalStatus,
                                               const SourceVrfPrefix& visited) {
    const auto& sources = leakLocalStatus.leakedRouteBySourceVrf();
    if (const auto* leaks = leakLocalStatus.leakedRouteBySourceVrf(visited.sourceVrfId())) {
        if (const auto* entry = leaks->destVrfId().after(visited.genPrefix())) {
            return {visited.sourceVrfId(), entry->key()};
        }
    }
    return firstFrom(sources, sources.after(visited.sourceVrfId()));
}

} // namespace Routing::DirectNet
