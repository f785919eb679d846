#include "directnet/backlog/IntfBacklogSm.h"

#include <cstdlib>

#include "directnet/model/Trace.h"
#include "platform/orb/attribute/DefineType.h"
#include "platform/orb/loop/ActivityManager.h"
#include "platform/orb/object/Decision.h"
#include "platform/orb/value/Assert.h"

namespace Routing::DirectNet {

ORB_DEFINE_TYPE(IntfBacklogSm)
ORB_REGISTER(IntfBacklogSm, IntfBacklogSm, unitIntfBacklogSm, 0)

namespace {

DIRECTNET_TRACE_UNIT("IntfBacklogSm");

constexpr unsigned tickMsecs = 10;
constexpr unsigned initialMaxTicks = 30000;
constexpr unsigned defaultBucketSize = 1024;

constexpr std::size_t membersAhead = 64;

// What traces are headed by, where they are not in the function of that name.
constexpr const char* handleBacklogName = "IntfBacklogSm::handleBacklog";
constexpr const char* processBacklogName = "IntfBacklogSm::processBacklog";
constexpr const char* doRouteConfigAddName = "IntfBacklogSm::doRouteConfigAdd";
constexpr const char* doRouteConfigDelName = "IntfBacklogSm::doRouteConfigDel";

/// A test aid: 0 is normal work; 1 and negative numbers drop members unprocessed, greater ones
/// leave them where they are.
long testMode() {
    const char* text = std::getenv("INTERFACEROUTEINFOSM_TEST");
    return text == nullptr ? 0 : std::strtol(text, nullptr, 10);
}

} // namespace

// Only additions ask for a drain: the drain's own removals would ask for a drain of nothing.
void IntfBacklogSm::OrbIntfBacklog::onAttribute(Orb::AttributeId id, const void* key) {
    if (id == IntfBacklog::backlogAttribute
        && notifier()->backlog(Orb::keyAs<IntfIdAndPrefix>(key))) {
        owner()->passedOver_ = 0;
        owner()->scheduleBacklog();
        owner()->listenAsNeeded();
    }
}

// While a drain is pending, additions are part of it: there is nothing to hear of them.
void IntfBacklogSm::listenAsNeeded() {
    orbIntfBacklog_.hasNotificationActiveIs(!drainPending() || passedOver_ != 0);
}

IntfBacklogSm::IntfBacklogSm(Arguments arguments)
    : arguments_(std::move(arguments)), orbBacklogClock_(this),
      orbIntfBacklog_(this, IntfBacklog::backlogAttribute) {
    orbBacklogClock_.notifierIs(backlogClock());
    orbIntfBacklog_.notifierIs(intfBacklog());
    handleInitialized();
}

void IntfBacklogSm::handleInitialized() {
    if (initialized()) {
        DIRECTNET_TRACE(8, *this, " already initialized");
        return;
    }
    DIRECTNET_TRACE(8, *this);
    orbBacklogClock_.timeMinIs(Orb::Clock::never);
    initializedIs(true);
    timerWheelIs(Orb::activityManager()->clock(), tickMsecs, initialMaxTicks, true,
                 defaultBucketSize);
    if (!intfBacklog()->backlog().empty()) {
        scheduleBacklog(); // what was queued before the machine came
    }
}

void IntfBacklogSm::scheduleBacklog() {
    if (drainPending()) {
        return;
    }
    orbBacklogClock_.timeMinIs(backlogClock()->now() + backlogDelay());
    DIRECTNET_TRACE(9, "timeMin=", orbBacklogClock_.timeMin());
}

// Somebody may run the clock from inside a notification. The decision is finished first.
void IntfBacklogSm::handleBacklog() {
    Orb::decideAfterwards(*this, [this] { doHandleBacklog(); });
}

void IntfBacklogSm::doHandleBacklog() {
    if (!initialized()) {
        return;
    }
    handleBacklogCallCountIs(handleBacklogCallCount() + 1);
    const std::size_t size = intfBacklog()->backlog().size();
    DIRECTNET_TRACE_IN(handleBacklogName, 8, "backlogSize=", size,
                       " invocation=", handleBacklogCallCount());
    DIRECTNET_RINGLOG_IN(handleBacklogName, "backlog size=", size,
                         " invocation=", handleBacklogCallCount());
    DIRECTNET_TRACE_IN(handleBacklogName, 8, "start backlogSize=", size,
                       " invocation=", handleBacklogCallCount());
    orbBacklogClock_.timeMinIs(Orb::Clock::never);
    listenAsNeeded();

    const Member* next = drain(firstMember());
    if (orbMarkedForDeletion()) {
        return; // the VRF went in the middle
    }
    const auto& members = intfBacklog()->backlog();
    DIRECTNET_TRACE_IN(handleBacklogName, 8, "backlogSize=", members.size(), " done");
    if (members.empty()) {
        intfBacklog()->backlogEmptyInc(1);
    } else if (next != nullptr) {
        backlogBookmarkIs(next->key());
        scheduleBacklog();
    }
}

const IntfBacklogSm::Member* IntfBacklogSm::firstMember() {
    const auto& members = intfBacklog()->backlog();
    const IntfIdAndPrefix bookmark = backlogBookmark();
    if (bookmark.intfId() == Lanx::IntfId()) {
        return members.first();
    }
    backlogBookmarkIs(IntfIdAndPrefix());
    return members.contains(bookmark) ? members.atOrAfter(bookmark) : members.first();
}

// The tables of a large VRF do not fit the processor's caches, and successive members lie far apart
// in all of them. Without prefetching, a drain spends most of its time waiting for memory.
std::vector<IntfBacklogSm::Pending> IntfBacklogSm::fetchAhead(const Member* start) const {
    std::vector<Pending> ahead;
    ahead.reserve(membersAhead);
    const auto& members = intfBacklog()->backlog();
    for (const Member* member = start; member != nullptr && ahead.size() < membersAhead;
         member = members.next(member)) {
        const Pending& pending =
            ahead.emplace_back(pendingOf(member->key(), members.tagAt(member)));
        routeConfigOf(pending.member.genPrefix().af()).prefetch(vrfId(), pending.routeTag);
        intfBacklog()->intfIdsByPrefix().prefetch(pending.prefixTag);
    }
    for (const Pending& pending : ahead) {
        routeConfigOf(pending.member.genPrefix().af()).prefetchRoute(vrfId(), pending.routeTag);
        intfBacklog()->prefixIndex().prefetchSet(pending.prefixTag);
    }
    return ahead;
}

IntfBacklogSm::Pending IntfBacklogSm::pendingOf(const IntfIdAndPrefix& member,
                                                Orb::HashTag tag) const {
    const Lanx::IpGenPrefix& prefix = member.genPrefix();
    return {member, tag, Orb::HashTag::of(prefix),
            Orb::HashTag::of(Rib::RouteKey(vrfId(), prefix))};
}

const IntfBacklogSm::Member* IntfBacklogSm::drain(const Member* start) {
    const long mode = testMode();
    const double startTime = backlogClock()->now();
    const auto& members = intfBacklog()->backlog();
    for (const Member* next = start; next != nullptr;) {
        double now = startTime;
        IntfIdAndPrefix last;
        for (const Pending& pending : fetchAhead(next)) {
            if (visit(pending, mode)) {
                passedOver_ = 0;
            } else {
                ++passedOver_;
                listenAsNeeded();
            }
            Orb::pauseBetweenDecisions();
            if (orbMarkedForDeletion()) {
                return nullptr;
            }
            last = pending.member;
            now = backlogClock()->now();
            if (startTime + backlogQuantum() <= now) {
                break;
            }
        }
        next = members.after(last);
        const bool wrapped = next == nullptr;
        if (wrapped) {
            next = members.first();
        }
        if (passedOver_ >= members.size()) {
            return nullptr; // all that is left waits for room
        }
        // In the test mode all members stay and are visited again and again. A simulated clock may
        // stand still meanwhile, so one round is enough then.
        if (startTime + backlogQuantum() <= now || (wrapped && mode > 1 && now == startTime)) {
            return next;
        }
    }
    return nullptr;
}

bool IntfBacklogSm::visit(const Pending& pending, long mode) {
    const IntfIdAndPrefix& member = pending.member;
    if (mode > 1) {
        return true;
    }
    if (mode == 0) {
        if (room(member.genPrefix().af()).waits() && !backlog(member)) {
            return false;
        }
        const IntfBacklog::Processing processing(*intfBacklog(), member);
        const bool stays = process(pending);
        if (processing.queuedAgain()) {
            return true;
        }
        if (stays) {
            backlogIs(member, false);
            return false;
        }
    }
    takeFromBacklog(pending);
    return true;
}

// Who else hears of it may add members meanwhile. Otherwise there is nothing to hear.
void IntfBacklogSm::takeFromBacklog(const Pending& pending) {
    if (orbIntfBacklog_.hearsAlone(IntfBacklog::backlogAttribute)) {
        orbIntfBacklog_.hasNotificationActiveIs(false);
    }
    intfBacklog()->backlogDel(pending.member, pending.tag);
    listenAsNeeded();
}

RoomWaiter<IntfBacklogSm>& IntfBacklogSm::room(Lanx::AddressFamily af) {
    return af == Lanx::AddressFamily::ipv4 ? room4_ : room6_;
}

void IntfBacklogSm::handleRoom() {
    passedOver_ = 0;
    scheduleBacklog();
}

IntfBacklogSm::Winner IntfBacklogSm::winnerOf(const IntfIdSet* intfIdAndAddrs) {
    if (intfIdAndAddrs == nullptr) {
        return {};
    }
    ORB_ASSERT(intfIdAndAddrs->intfIdAndAddrs() > 0, "intfIdAndAddrs->intfIdAndAddrs() > 0");
    const auto& [contributor, viaSetKey] = *intfIdAndAddrs->intfIdAndAddr().first();
    return {contributor, viaSetKey};
}

IntfIdAndAddr IntfBacklogSm::getIntfIdAndAddr(const Lanx::IpGenPrefix& prefix) const {
    return winnerOf(intfIdsByPrefix(prefix)).contributor;
}

Rib::ViaSetKey IntfBacklogSm::getViaSetKey(const Lanx::IpGenPrefix& prefix,
                                           const IntfIdAndAddr& iiaa) const {
    const IntfIdSet* set = intfIdsByPrefix(prefix);
    return set == nullptr ? Rib::ViaSetKey() : set->intfIdAndAddr(iiaa);
}

Rib::RouteConfig& IntfBacklogSm::routeConfigOf(Lanx::AddressFamily af) const {
    return af == Lanx::AddressFamily::ipv4 ? *route4Config() : *route6Config();
}

bool IntfBacklogSm::processBacklog(const IntfIdAndPrefix& intfAndPrefix) {
    return process(pendingOf(intfAndPrefix, Orb::HashTag::of(intfAndPrefix)));
}

bool IntfBacklogSm::process(const Pending& pending) {
    const Lanx::IpGenPrefix& prefix = pending.member.genPrefix();
    const Lanx::AddressFamily af = prefix.af();
    DIRECTNET_TRACE_IN(processBacklogName, 9, "intf=", pending.member.intfId(), " pfx=", prefix,
                       "af=", af);
    Rib::RouteConfig& routeConfig = routeConfigOf(af);
    IntfViaSetKeyStatus& status = *intfBacklog()->intfViaSetKeyStatusFromAf(af);

    const Rib::RouteKey key(vrfId(), prefix);
    const Rib::Route configured = routeConfig.route(key, pending.routeTag);
    const PrefixIndex::Known known = intfBacklog()->prefixIndex().known(prefix, pending.prefixTag);
    const Winner winner = winnerOf(known.contributors);
    const IntfIdAndAddr& contributor = winner.contributor;
    if (configured.routeType() == contributor.routeType()
        && configured.viaSetKey() == winner.viaSetKey
        && configured.srcVrfId() == contributor.sourceVrfId()) {
        DIRECTNET_RINGLOG_IN(processBacklogName, "pfx=", prefix, " viaSetId=", winner.viaSetKey,
                             ", no change");
        return false;
    }
    const bool wins = !!contributor;
    if (wins && !routeConfig.hasRoomFor(key)) {
        room(af).await(*this, Orb::Ptr<const OrbMemtab::Table>(&routeConfig), intfBacklog());
        return true;
    }
    // Taken before the old route's is given back, which may be the last one of the same interface.
    if (wins && contributor.sourceVrfId() == VrfId::invalid()) {
        status.incIntfVskRefcount(contributor.intfId());
    }
    if (configured != Rib::Route()) {
        const Lanx::IntfId existingIntfId = known.installedIntfId;
        ORB_ASSERT(existingIntfId != Lanx::IntfId(), "existingIntfId != Lanx::IntfId()");
        if (!wins) {
            delRoute(existingIntfId, routeConfig, pending, configured.viaSetKey());
        }
        if (configured.srcVrfId() == VrfId::invalid()) {
            intfViaSetConfig()->releaseViaSetKey(existingIntfId, status);
        }
    }
    if (wins) {
        addRoute(winner, routeConfig, pending);
    }
    return false;
}

void IntfBacklogSm::doRouteConfigAdd(Lanx::IntfId intfId, Rib::RouteConfig& routeConfig,
                                     const Lanx::IpGenPrefix& prefix, VrfId sourceVrfId,
                                     Rib::ViaSetKey viaSetKey, Fib::RouteType routeType) {
    const IntfIdAndAddr contributor(intfId, {}, sourceVrfId, false, routeType);
    addRoute({contributor, viaSetKey}, routeConfig, pendingOf({intfId, prefix}, {}));
}

void IntfBacklogSm::addRoute(const Winner& winner, Rib::RouteConfig& routeConfig,
                             const Pending& pending) {
    const Lanx::IpGenPrefix& prefix = pending.member.genPrefix();
    const IntfIdAndAddr& contributor = winner.contributor;
    Rib::Route route(Rib::RouteKey(vrfId(), prefix), winner.viaSetKey, contributor.routeType());
    route.srcVrfIdIs(contributor.sourceVrfId());
    installedIntfIdIs(prefix, contributor.intfId(), pending.prefixTag);
    routeConfig.routeAdd(route, pending.routeTag);
    DIRECTNET_TRACE_IN(doRouteConfigAddName, 8, "prefix=", prefix,
                       " routeType=", contributor.routeType(), " viaSetId=", winner.viaSetKey,
                       " source vrf id=", contributor.sourceVrfId());
    DIRECTNET_RINGLOG_IN(doRouteConfigAddName, "prefix=", prefix,
                         " routeType=", contributor.routeType(), " viaSetId=", winner.viaSetKey,
                         " source vrf id=", contributor.sourceVrfId(), " added");
}

void IntfBacklogSm::doRouteConfigDel(Lanx::IntfId intfId, Rib::RouteConfig& routeConfig,
                                     const Lanx::IpGenPrefix& prefix, Rib::ViaSetKey viaSetKey) {
    delRoute(intfId, routeConfig, pendingOf({intfId, prefix}, {}), viaSetKey);
}

void IntfBacklogSm::delRoute(Lanx::IntfId intfId, Rib::RouteConfig& routeConfig,
                             const Pending& pending, Rib::ViaSetKey viaSetKey) {
    const Lanx::IpGenPrefix& prefix = pending.member.genPrefix();
    installedIntfIdDel(prefix, pending.prefixTag);
    routeConfig.routeDel(Rib::RouteKey(vrfId(), prefix), pending.routeTag);
    DIRECTNET_TRACE_IN(doRouteConfigDelName, 8, "intf=", intfId, " prefix=", prefix,
                       " viaSetId=", viaSetKey);
}

} // namespace Routing::DirectNet
