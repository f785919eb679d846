#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "directnet/backlog/InstalledRoutes.h"
#include "directnet/backlog/IntfBacklog.h"
#include "directnet/backlog/IntfViaSetConfig.h"
#include "directnet/backlog/RoomWaiter.h"
#include "directnet/model/Units.h"
#include "platform/kiln/TimerWheel.h"
#include "platform/orb/attribute/Declare.h"
#include "platform/orb/loop/Clock.h"
#include "platform/routing/RouteConfig.h"

namespace Routing::DirectNet {

/// Turns a VRF's backlog into routes. A change of the backlog asks for a drain, which runs a short,
/// fixed delay later and lasts no longer than a quantum: for each queued prefix the smallest
/// contributor's route is written, or the route deleted when there is none. What is left goes on
/// after another delay from where the slice stopped. Each drain that empties the backlog is counted
/// in it.
///
/// For every local route that it has written the machine holds one reference on the via sets of the
/// route's interface.
class IntfBacklogSm : public Orb::Entity {
    ORB_ENTITY(IntfBacklogSm, "Routing::DirectNet::IntfBacklogSm")
    ORB_CONSTRUCTOR((L3::VrfName, vrfName), (Vrf::VrfIdMap::VrfId, vrfId),
                    (Orb::Ptr<const Orb::Clock>, backlogClock),
                    (Orb::Ptr<Rib::RouteConfig>, route4Config),
                    (Orb::Ptr<Rib::RouteConfig>, route6Config),
                    (Orb::Ptr<IntfViaSetConfig>, intfViaSetConfig),
                    (Orb::Ptr<IntfBacklog>, intfBacklog))
    /// Seconds that one drain may take, and that lie between a request and its drain.
    ORB_ATTRIBUTE(265, double, backlogQuantum, 0.08)
    ORB_ATTRIBUTE(266, double, backlogDelay, 0.04)
    ORB_ATTRIBUTE(267, std::uint32_t, handleBacklogCallCount)
    /// Where the next drain resumes; without an interface: at the beginning.
    ORB_ATTRIBUTE(268, IntfIdAndPrefix, backlogBookmark)
    /// For each prefix with a route, the interface it was written for.
    ORB_COLLECTION_IN(InstalledRoutes, 269, Lanx::IpGenPrefix, Lanx::IntfId, installedIntfId,
                      {arguments_.intfBacklog->prefixIndex()})
    ORB_CHILD(270, Kiln::TimerWheel, timerWheel)
    ORB_ATTRIBUTE(271, bool, initialized)

  public:
    using VrfId = Vrf::VrfIdMap::VrfId;

    /// Creates a machine from its constructor attributes, in their order.
    template <typename... Inputs>
    static Orb::Ptr<IntfBacklogSm> IntfBacklogSmIs(Inputs&&... inputs) {
        return Orb::makePtr<IntfBacklogSm>(Arguments{std::forward<Inputs>(inputs)...});
    }

    explicit IntfBacklogSm(Arguments arguments);

    void handleInitialized();

    /// Asks for a drain; while one is pending, further requests are part of it.
    void scheduleBacklog();

    /// One slice.
    void handleBacklog();

    /// There may be room for routes that were refused.
    void handleRoom();

    /// Brings the route of one prefix in line with its contributors. False: the member is done
    /// with. True: there is no room for the route, and the member stays until there is.
    bool processBacklog(const IntfIdAndPrefix& intfAndPrefix);

    /// The contributor whose route wins; the empty one where the prefix has none.
    IntfIdAndAddr getIntfIdAndAddr(const Lanx::IpGenPrefix& prefix) const;

    /// The via set of that contributor's route; the empty key where there is none.
    Rib::ViaSetKey getViaSetKey(const Lanx::IpGenPrefix& prefix, const IntfIdAndAddr& iiaa) const;

    void doRouteConfigAdd(Lanx::IntfId intfId, Rib::RouteConfig& routeConfig,
                          const Lanx::IpGenPrefix& prefix, VrfId sourceVrfId,
                          Rib::ViaSetKey viaSetKey, Fib::RouteType routeType);
    void doRouteConfigDel(Lanx::IntfId intfId, Rib::RouteConfig& routeConfig,
                          const Lanx::IpGenPrefix& prefix, Rib::ViaSetKey viaSetKey);

    // The backlog's, for whoever has only the machine.
    bool backlog(const IntfIdAndPrefix& key) const { return intfBacklog()->backlog(key); }
    void backlogIs(const IntfIdAndPrefix& key, bool value) { intfBacklog()->backlogIs(key, value); }
    void backlogDel(const IntfIdAndPrefix& key) { intfBacklog()->backlogDel(key); }
    IntfIdSet* intfIdsByPrefix(const Lanx::IpGenPrefix& prefix) const {
        return intfBacklog()->intfIdsByPrefix(prefix);
    }
    void intfIdsByPrefixIs(Orb::Ptr<IntfIdSet> set) {
        intfBacklog()->intfIdsByPrefixIs(std::move(set));
    }
    void intfIdsByPrefixDel(const Lanx::IpGenPrefix& prefix) {
        intfBacklog()->intfIdsByPrefixDel(prefix);
    }
    const Orb::Ptr<IntfViaSetKeyStatus>& intfViaSetKeyStatus4() const {
        return intfBacklog()->intfViaSetKeyStatus4();
    }
    const Orb::Ptr<IntfViaSetKeyStatus>& intfViaSetKeyStatus6() const {
        return intfBacklog()->intfViaSetKeyStatus6();
    }
    Orb::Ptr<IntfViaSetKeyStatus> newIntfViaSetKeyStatus4(Lanx::AddressFamily af) {
        return intfBacklog()->intfViaSetKeyStatus4Is(af);
    }
    Orb::Ptr<IntfViaSetKeyStatus> newIntfViaSetKeyStatus6(Lanx::AddressFamily af) {
        return intfBacklog()->intfViaSetKeyStatus6Is(af);
    }

    friend std::ostream& operator<<(std::ostream& out, const IntfBacklogSm& sm) {
        return out << sm.vrfName();
    }

  private:
    class OrbBacklogClock : public Orb::Clock::NotifieeConst {
      public:
        explicit OrbBacklogClock(IntfBacklogSm* sm) : sm_(sm) {}
        void onTimeMin() override { sm_->handleBacklog(); }

      protected:
        const Orb::PtrInterface* keeper() const override { return sm_; }

      private:
        IntfBacklogSm* sm_;
    };

    class OrbIntfBacklog : public Orb::Reactor<IntfBacklogSm, IntfBacklog> {
      public:
        using Reactor::Reactor;
        void onAttribute(Orb::AttributeId id, const void* key) override;
    };

    /// The contributor whose route wins, and the via set of that route.
    struct Winner {
        IntfIdAndAddr contributor;
        Rib::ViaSetKey viaSetKey;
    };

    void listenAsNeeded();
    void doHandleBacklog();
    /// A member of the backlog and where it, its prefix and its route belong in their tables.
    struct Pending {
        IntfIdAndPrefix member;
        Orb::HashTag tag;
        Orb::HashTag prefixTag;
        Orb::HashTag routeTag;
    };
    Pending pendingOf(const IntfIdAndPrefix& member, Orb::HashTag tag) const;

    /// Processes one member unless its route still waits for room, in which case it answers false.
    bool visit(const Pending& pending, long mode);
    bool process(const Pending& pending);
    void takeFromBacklog(const Pending& pending);
    void addRoute(const Winner& winner, Rib::RouteConfig& routeConfig, const Pending& pending);
    void delRoute(Lanx::IntfId intfId, Rib::RouteConfig& routeConfig, const Pending& pending,
                  Rib::ViaSetKey viaSetKey);
    RoomWaiter<IntfBacklogSm>& room(Lanx::AddressFamily af);

    static Winner winnerOf(const IntfIdSet* intfIdAndAddrs);

    Rib::RouteConfig& routeConfigOf(Lanx::AddressFamily af) const;
    bool drainPending() const { return orbBacklogClock_.timeMin() < Orb::Clock::never; }

    using Member = Orb::MapEntry<IntfIdAndPrefix, bool>;

    /// Works through the members from `start` on; answers where the slice stopped, null for the
    /// end.
    const Member* drain(const Member* start);
    const Member* firstMember();
    /// The next few members from `start` on, with a prefetch of what processing them will read.
    std::vector<Pending> fetchAhead(const Member* start) const;

    /// How many members were visited one after the other that wait for room. Once these are as many
    /// as there are members, nothing is left to do. A new member or room begins the count anew.
    std::size_t passedOver_ = 0;
    RoomWaiter<IntfBacklogSm> room4_;
    RoomWaiter<IntfBacklogSm> room6_;
    OrbBacklogClock orbBacklogClock_;
    OrbIntfBacklog orbIntfBacklog_;
};

} // namespace Routing::DirectNet
