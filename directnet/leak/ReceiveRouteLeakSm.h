#pragma once

#include "directnet/backlog/IntfBacklogByVrf.h"
#include "directnet/backlog/IntfViaSetConfig.h"
#include "directnet/leak/LeakReactors.h"
#include "directnet/leak/LeakSource.h"
#include "directnet/model/Units.h"
#include "platform/kiln/Task.h"
#include "platform/kiln/TaskScheduler.h"
#include "platform/orb/attribute/Declare.h"
#include "platform/routing/DirectNetLeakLocalStatus.h"
#include "platform/routing/SourceVrfPrefix.h"

namespace Routing::DirectNet {

/// Installs, in the VRFs that a connected prefix is leaked to, a receive route for each address
/// that the source VRF has in the prefix.
///
///     LeakRule.h       when an address is leaked
///     LeakedRoutes.h   what is installed then
///     LeakSource.h     follows one VRF, whose contributors and interfaces may change that
///     LeakReactors.h   follow the leak status, which may, too
///     LeakWalk.h       the order of the review
///
/// Whatever changes, handleContributor() asks the rule and adds or removes the route. So it does
/// not matter in which order things are seen, or how often. Single changes are followed as they
/// happen; what they cannot tell (a VRF that comes late) is caught by a review of everything that
/// is leaked, in runs that yield.
class ReceiveRouteLeakSm : public Orb::Entity {
    ORB_ENTITY(ReceiveRouteLeakSm, "Routing::DirectNet::ReceiveRouteLeakSm")
    ORB_CONSTRUCTOR((Orb::Ptr<const DirectNetLeakLocalStatus>, crLeakLocalStatus4),
                    (Orb::Ptr<const DirectNetLeakLocalStatus>, crLeakLocalStatus6),
                    (Orb::Ptr<Kiln::TaskScheduler>, scheduler),
                    (Orb::Ptr<IntfViaSetConfig>, intfViaSetConfig),
                    (Orb::Ptr<IntfBacklogByVrf>, intfBacklogByVrf))

  public:
    using VrfId = Vrf::VrfIdMap::VrfId;
    using LeakLocalStatus = DirectNetLeakLocalStatus;

    /// Watch the leaks of one source VRF, in one address family each.
    using OrbLeakedRoute =
        SourceVrfReactor<Orb::MemberReactor<ReceiveRouteLeakSm, RouteLeakedFromVrf>>;
    class OrbLeakedRoute4 : public OrbLeakedRoute {
        ORB_TYPE(OrbLeakedRoute4, "Routing::DirectNet::ReceiveRouteLeakSm::OrbLeakedRoute4")
        using OrbLeakedRoute::OrbLeakedRoute;
    };
    class OrbLeakedRoute6 : public OrbLeakedRoute {
        ORB_TYPE(OrbLeakedRoute6, "Routing::DirectNet::ReceiveRouteLeakSm::OrbLeakedRoute6")
        using OrbLeakedRoute::OrbLeakedRoute;
    };

    /// Watches the backlog of one VRF.
    using OrbIntfBacklog = LeakSource;

    ORB_REACTORS(263, OrbLeakedRoute4, leakedRoute4)
    ORB_REACTORS(264, OrbLeakedRoute6, leakedRoute6)
    ORB_REACTORS(265, OrbIntfBacklog, intfBacklog)
    ORB_ATTRIBUTE(266, Orb::Ptr<Kiln::Task>, reviewTask)
    /// The next (source VRF, prefix) of a suspended review; with the invalid VRF id: the beginning.
    ORB_ATTRIBUTE(267, SourceVrfPrefix, reviewBookmark)
    ORB_ATTRIBUTE(268, bool, reviewedIpv4)
    ORB_ATTRIBUTE(269, bool, reviewedIpv6)
    ORB_ATTRIBUTE(270, bool, initialized)

  public:
    explicit ReceiveRouteLeakSm(Arguments arguments);

    void handleInitialized();

    // --- What changes.

    void handleSourceVrf(const LeakLocalStatus& status, VrfId sourceVrfId);
    void handleLeakedPrefix(const RouteLeakedFromVrf& leaks, const LeakedPrefix& leaked);

    /// Brings what one destination has of one leaked prefix in line with the leak status.
    void handleLeakedRoute(VrfId sourceVrfId, const Lanx::IpGenPrefix& prefix,
                           const LeakLocalStatus& leakLocalStatus, VrfId destVrfId);

    /// The same for one contributor of the prefix, in every destination.
    void handleContributor(const IntfBacklog& source, const Lanx::IpGenPrefix& prefix,
                           const IntfIdAndAddr& contributor);

    // --- What is done about it.

    /// Adds a route that the destination does not have; the interface must have via sets in the
    /// source. Does nothing while either VRF has no backlog.
    void addLeakedReceiveRoute(Lanx::IntfId intfId, const Lanx::IpGenAddrWithMask& addrWithMask,
                               VrfId sourceVrfId, VrfId destVrfId);
    /// Removes a route that the destination has.
    void delLeakedReceiveRoute(Lanx::IntfId intfId, const Lanx::IpGenAddrWithMask& addrWithMask,
                               const IntfBacklog& sourceBacklog, IntfBacklog& destBacklog);

    // --- The review.

    /// Starts a review from the beginning, whatever the state of the present one.
    void scheduleReview();
    /// One run of it.
    void doReview();
    /// One pass over a family. False when it was suspended or another review was asked for
    /// meanwhile, the task being scheduled again.
    bool doReviewCrLeakStatus(const LeakLocalStatus& leakLocalStatus);

    const LeakLocalStatus& crLeakLocalStatus(Lanx::AddressFamily af) const {
        return af == Lanx::AddressFamily::ipv4 ? *crLeakLocalStatus4() : *crLeakLocalStatus6();
    }

    /// Whether the leak status knows the VRF as one that leaks.
    bool leaks(VrfId sourceVrfId) const;
    /// The destinations of a prefix that a VRF leaks; null where it leaks it nowhere.
    const RouteLeakedFromVrf::DestVrfIds* destinations(VrfId sourceVrfId,
                                                       const Lanx::IpGenPrefix& prefix) const;

  private:
    class OrbReviewTask : public Kiln::Task::NotifieeConst {
      public:
        explicit OrbReviewTask(ReceiveRouteLeakSm* sm) : sm_(sm) {}
        void onRun() override { sm_->doReview(); }

      protected:
        const Orb::PtrInterface& keeper() const override { return *sm_; }

      private:
        ReceiveRouteLeakSm* sm_;
    };

    using OrbCrLeakLocalStatus4 =
        LeakStatusReactor<Orb::Reactor<ReceiveRouteLeakSm, LeakLocalStatus>>;
    using OrbCrLeakLocalStatus6 = OrbCrLeakLocalStatus4;

    class OrbIntfBacklogByVrf : public Orb::Reactor<ReceiveRouteLeakSm, IntfBacklogByVrf> {
      public:
        using Reactor::Reactor;
        void onAttribute(Orb::AttributeId id, const void* key) override;
    };

    void handleBacklog(VrfId vrfId);
    void handleContributor(const LeakLocalStatus& status, const IntfBacklog& source,
                           const IntfIdAndAddr& contributor, VrfId destVrfId);
    void review();

    OrbReviewTask orbReviewTask_;
    OrbCrLeakLocalStatus4 orbCrLeakLocalStatus4_;
    OrbCrLeakLocalStatus6 orbCrLeakLocalStatus6_;
    OrbIntfBacklogByVrf orbIntfBacklogByVrf_;
};

} // namespace Routing::DirectNet
