#pragma once

#include <utility>

#include "directnet/ready/AllVrfReadyStatus.h"
#include "platform/orb/attribute/Declare.h"
#include "platform/orb/attribute/Dir.h"
#include "platform/routing/AllVrfRibReady.h"
#include "platform/routing/ProtoVrfStatus.h"

namespace Routing::DirectNet {

/// Tells the routing information base, for each VRF that it waits on, when the VRF's connected
/// routes are complete: keeps one record per such VRF and marks it, once, when both families are
/// ready.
class AllVrfRibReadySm : public Orb::Entity {
    ORB_ENTITY(AllVrfRibReadySm, "Routing::DirectNet::AllVrfRibReadySm")
    ORB_CONSTRUCTOR((Orb::Ptr<const Rib::AllVrfRibReady>, allVrfRibReady),
                    (Orb::Ptr<const AllVrfReadyStatus>, allVrfReadyStatus),
                    (Orb::Ptr<Orb::Dir>, protoStatusDir))

  public:
    /// Watches the readiness of one VRF.
    class OrbVrfReadyStatus : public Orb::MemberReactor<AllVrfRibReadySm, VrfReadyStatus> {
        ORB_TYPE(OrbVrfReadyStatus, "Routing::DirectNet::AllVrfRibReadySm::OrbVrfReadyStatus")

      public:
        OrbVrfReadyStatus(AllVrfRibReadySm* sm, Orb::Ptr<const VrfReadyStatus> status);

        bool initialized() const { return initialized_; }
        void handleInitialized();
        void onAttribute(Orb::AttributeId id, const void* key) override;
        void notifierIs(Orb::Ptr<const VrfReadyStatus> status) override;

      private:
        void orb_handleVrfReadyStatus_v4DirectNetsReady();
        void orb_handleVrfReadyStatus_v6DirectNetsReady();

        bool initialized_ = false;
    };
    ORB_REACTORS(261, OrbVrfReadyStatus, vrfReadyStatus)
    ORB_ATTRIBUTE(262, bool, initialized)

    explicit AllVrfRibReadySm(Arguments arguments);
    ~AllVrfRibReadySm() override;

    void handleInitialized();
    void handleVrfRibReady(const L3::VrfName& vrfName);
    void handleVrfReadyStatus(const L3::VrfName& vrfName);
    bool vrfDirectNetsReady(const L3::VrfName& vrfName) const;
    void maybeSignalVrfReady(const L3::VrfName& vrfName);

  private:
    class OrbAllVrfRibReady : public Orb::InputReactor<AllVrfRibReadySm, Rib::AllVrfRibReady> {
      public:
        using InputReactor::InputReactor;
        void onAttribute(Orb::AttributeId id, const void* key) override;
    };

    class OrbAllVrfReadyStatus : public Orb::Reactor<AllVrfRibReadySm, AllVrfReadyStatus> {
      public:
        using Reactor::Reactor;
        void onAttribute(Orb::AttributeId id, const void* key) override;
    };

    bool isWaitedFor(const Orb::Name& name) const;
    Orb::Ptr<Rib::ProtoVrfStatus> protoVrfStatus(const L3::VrfName& vrfName);

    OrbAllVrfRibReady orbAllVrfRibReady_;
    OrbAllVrfReadyStatus orbAllVrfReadyStatus_;
};

} // namespace Routing::DirectNet
