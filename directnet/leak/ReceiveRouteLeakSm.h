#pragma once

#include <cstdint>
#include <utility>

#include "directnet/backlog/IntfBacklogByVrf.h"
#include "directnet/backlog/IntfViaSetConfig.h"
#include "directnet/model/Units.h"
#include "platform/kiln/Task.h"
#include "platform/kiln/TaskScheduler.h"
#include "platform/orb/attribute/Declare.h"
#include "platform/routing/DirectNetLeakLocalStatus.h"
#include "platform/routing/SourceVrfPrefix.h"

namespace Routing::DirectNet {

/// Installs, in the VRFs that a connected prefix is leaked to, a receive route for each address
/// that the source VRF has in the prefix. The route goes through the source interface's receive via
/// set; the reference on it is counted in the source VRF, where the via set lives.
///
/// A leaked route is in the destination's prefix index exactly while its reference is held, so
/// however often one change is seen, it counts once. Single changes are followed as they happen;
/// what can't be (a VRF that comes late) is caught by a review of everything that is leaked, in
/// runs that yield.
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

    /// Watches the leaks of one source VRF in one address family.
    class OrbLeakedRoute : public Orb::MemberReactor<ReceiveRouteLeakSm, RouteLeakedFromVrf> {
      public:
        OrbLeakedRoute(ReceiveRouteLeakSm* sm, Orb::Ptr<const RouteLeakedFromVrf> leaks)
            : MemberReactor(sm) {
            attach(std::move(leaks));
        }
        virtual const LeakLocalStatus& status() const = 0;
        void handleInitialized();
        void onAttribute(Orb::AttributeId id, const void* key) override;
        void notifierIs(Orb::Ptr<const RouteLeakedFromVrf> leaks) override;
        void orbDoZombieReactors(bool zombie) override;
    };

    class OrbLeakedRoute4 : public OrbLeakedRoute {
        ORB_TYPE(OrbLeakedRoute4, "Routing::DirectNet::ReceiveRouteLeakSm::OrbLeakedRoute4")
        using OrbLeakedRoute::OrbLeakedRoute;
        const LeakLocalStatus& status() const override { return *owner()->crLeakLocalStatus4(); }
    };

    class OrbLeakedRoute6 : public OrbLeakedRoute {
        ORB_TYPE(OrbLeakedRoute6, "Routing::DirectNet::ReceiveRouteLeakSm::OrbLeakedRoute6")
        using OrbLeakedRoute::OrbLeakedRoute;
        const LeakLocalStatus& status() const override { return *owner()->crLeakLocalStatus6(); }
    };

    /// Watches the backlog of one VRF: the contributors of the prefixes that it leaks, and which of
    /// its interfaces have addresses of their own.
    class OrbIntfBacklog : public Orb::MemberReactor<ReceiveRouteLeakSm, IntfBacklog> {
        ORB_TYPE(OrbIntfBacklog, "Routing::DirectNet::ReceiveRouteLeakSm::OrbIntfBacklog")

      public:
        /// Watches the contributors of one leaked prefix.
        class OrbIntfIdsByPrefix : public Orb::MemberReactor<OrbIntfBacklog, IntfIdSet> {
            ORB_TYPE(OrbIntfIdsByPrefix,
                     "Routing::DirectNet::ReceiveRouteLeakSm::OrbIntfBacklog::OrbIntfIdsByPrefix")

          public:
            OrbIntfIdsByPrefix(OrbIntfBacklog* backlog, Orb::Ptr<const IntfIdSet> set);
            void handleInitialized();
            void onAttribute(Orb::AttributeId id, const void* key) override;
            void notifierIs(Orb::Ptr<const IntfIdSet> set) override;
            void orbDoZombieReactors(bool zombie) override;

          private:
            void noteVirtuals(bool contribute);
        };
        ORB_REACTORS(258, OrbIntfIdsByPrefix, intfIdsByPrefix)

      public:
        OrbIntfBacklog(ReceiveRouteLeakSm* sm, Orb::Ptr<const IntfBacklog> backlog);

        void handleInitialized();
        void onAttribute(Orb::AttributeId id, const void* key) override;
        void orbDoZombieReactors(bool zombie) override;

        /// Follows the prefix's contributors if the prefix is leaked and has any, else stops.
        void handlePrefix(const Lanx::IpGenPrefix& prefix);
        void handleIntfIdAndAddr(const Lanx::IpGenPrefix& prefix, const IntfIdAndAddr& iiaa,
                                 bool added);
        /// The VRF's backlog is gone, and with it the routes leaked from it and into it.
        void handleDelete();

      private:
        using Prefixes = Orb::OrderedMap<Lanx::IpGenPrefix, bool>;

        class OrbOwnAddresses : public Orb::Reactor<OrbIntfBacklog, IntfViaSetKeyStatus> {
          public:
            using Reactor::Reactor;
            void onAttribute(Orb::AttributeId id, const void* key) override;
        };

        void handleOwnAddresses(Lanx::IntfId intfId, Lanx::AddressFamily af);
        void handleVirtual(const IntfBacklog& source, const IntfIdSet& set, Lanx::IntfId intfId);
        /// Virtual addresses of the interface contribute to a prefix that is followed, or no more.
        void noteVirtual(const Lanx::IpGenPrefix& prefix, Lanx::IntfId intfId, bool contributes);
        void deleteLeakedFrom();
        void deleteLeakedFrom(const IntfBacklog& source, const IntfIdSet& set, VrfId destVrfId);
        void deleteLeakedInto();

        OrbOwnAddresses orbOwnAddresses4_;
        OrbOwnAddresses orbOwnAddresses6_;
        /// The followed prefixes to which an interface contributes with virtual addresses: whether
        /// these count depends on the interface's own addresses.
        Orb::HashMap<Lanx::IntfId, Prefixes> virtualPrefixes_;
    };

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
    ~ReceiveRouteLeakSm() override;

    void handleInitialized();

    /// Brings what one destination has of one leaked prefix in line with the leak status.
    void handleLeakedRoute(VrfId sourceVrfId, const Lanx::IpGenPrefix& prefix,
                           const LeakLocalStatus& leakLocalStatus, VrfId destVrfId);

    void addLeakedReceiveRoute(Lanx::IntfId intfId, const Lanx::IpGenAddrWithMask& addrWithMask,
                               VrfId sourceVrfId, VrfId destVrfId);
    void delLeakedReceiveRoute(Lanx::IntfId intfId, const Lanx::IpGenAddrWithMask& addrWithMask,
                               const IntfBacklog& sourceBacklog, IntfBacklog& destBacklog);

    /// Starts a review from the beginning, whatever the state of the present one.
    void scheduleReview();
    void doReview();
    /// One pass over a family. False when it was suspended or another review was asked for
    /// meanwhile, the task being scheduled again.
    bool doReviewCrLeakStatus(const LeakLocalStatus& leakLocalStatus);

    const LeakLocalStatus& crLeakLocalStatus(Lanx::AddressFamily af) const {
        return af == Lanx::AddressFamily::ipv4 ? *crLeakLocalStatus4() : *crLeakLocalStatus6();
    }

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

    /// Follows the source VRFs of one family's leak status.
    class OrbCrLeakLocalStatus : public Orb::Reactor<ReceiveRouteLeakSm, LeakLocalStatus> {
      public:
        using Reactor::Reactor;
        void onAttribute(Orb::AttributeId id, const void* key) override;
    };

    using OrbCrLeakLocalStatus4 = OrbCrLeakLocalStatus;
    using OrbCrLeakLocalStatus6 = OrbCrLeakLocalStatus;

    class OrbIntfBacklogByVrf : public Orb::Reactor<ReceiveRouteLeakSm, IntfBacklogByVrf> {
      public:
        using Reactor::Reactor;
        void onAttribute(Orb::AttributeId id, const void* key) override;
    };

    void review();
    void handleSourceVrf(const LeakLocalStatus& status, VrfId sourceVrfId);
    void handleBacklog(VrfId vrfId);
    /// Adds or removes what one local connected contributor has in one destination.
    void handleContributor(const IntfBacklog& source, const IntfIdSet& set,
                           const IntfIdAndAddr& contributor, VrfId destVrfId);
    void reviewPrefix(const RouteLeakedFromVrf& leaks, const Lanx::IpGenPrefix& prefix,
                      const LeakLocalStatus& leakLocalStatus);
    SourceVrfPrefix reviewStart(const LeakLocalStatus& leakLocalStatus) const;
    static SourceVrfPrefix reviewNext(const LeakLocalStatus& leakLocalStatus,
                                      const SourceVrfPrefix& visited);

    /// The scheduler asked for a pause behind the last prefix of a pass.
    bool pauseAfterPass_ = false;
    OrbReviewTask orbReviewTask_;
    OrbCrLeakLocalStatus4 orbCrLeakLocalStatus4_;
    OrbCrLeakLocalStatus6 orbCrLeakLocalStatus6_;
    OrbIntfBacklogByVrf orbIntfBacklogByVrf_;
};

} // namespace Routing::DirectNet
