#pragma once

#include <map>
#include <utility>

#include "directnet/ready/AllVrfReadyStatus.h"
#include "platform/orb/attribute/Declare.h"
#include "platform/orb/attribute/Dir.h"
#include "platform/routing/AllVrfRibReady.h"
#include "platform/routing/ProtoVrfStatus.h"
#include "platform/routing/ProtoVrfTable.h"
#include "platform/routing/RouteConfig.h"
#include "platform/routing/ViaConfig.h"
#include "platform/vrf/NameToIdMapWrapper.h"

namespace Routing::DirectNet {

/// Keeps the table by which readers make sense of the others: each VRF that has a container, with
/// its readiness and the record that the routing information base has of it.
///
/// What an earlier run left in the tables belongs to VRFs that are yet to come: each is cleared
/// when its container is made. Those that do not come back are cleared, once, as soon as there are
/// VRFs, all of them are ready, and every VRF that the routing information base waits for has been
/// declared ready to it: until then one may still be on its way.
class ProtoVrfSm : public Orb::Entity {
    ORB_ENTITY(ProtoVrfSm, "Routing::DirectNet::ProtoVrfSm")
    ORB_CONSTRUCTOR(
        (Orb::Ptr<Rib::ProtoVrfTable>, protoVrfTable),
        (Orb::Ptr<const AllVrfReadyStatus>, allVrfReadyStatus),
        (Orb::Ptr<const Vrf::VrfIdMap::NameToIdMapWrapper>, nameToIdMapWrapper, Orb::mayBeNull),
        (Orb::Ptr<const Rib::AllVrfRibReady>, allVrfRibReady),
        (Orb::Ptr<const Orb::Dir>, protoStatusDir), (Orb::Ptr<Rib::RouteConfig>, route4Config),
        (Orb::Ptr<Rib::RouteConfig>, route6Config), (Orb::Ptr<Rib::Ip::ViaConfig>, ipv4ViaConfig),
        (Orb::Ptr<Rib::Ip::ViaConfig>, ipv6ViaConfig))

  public:
    using VrfId = Vrf::VrfIdMap::VrfId;

    /// Watches the readiness of one VRF.
    class OrbVrfReadyStatus : public Orb::MemberReactor<ProtoVrfSm, VrfReadyStatus> {
        ORB_TYPE(OrbVrfReadyStatus, "Routing::DirectNet::ProtoVrfSm::OrbVrfReadyStatus")

      public:
        OrbVrfReadyStatus(ProtoVrfSm* sm, Orb::Ptr<const VrfReadyStatus> status);
        void onAttribute(Orb::AttributeId id, const void* key) override;
    };
    ORB_REACTORS(267, OrbVrfReadyStatus, vrfReadyStatus)
    /// The VRFs that are in the table, by name, with the id that each has there.
    ORB_MAP(268, L3::VrfName, VrfId, vrfId)
    ORB_ATTRIBUTE(269, bool, leftoversCleared)

    explicit ProtoVrfSm(Arguments arguments);
    ~ProtoVrfSm() override;

    void handleInitialized();
    /// A VRF is about to get a container, or to lose it.
    void handleVrf(const L3::VrfName& name);
    /// A VRF has no container, and its routes are gone.
    void handleVrfGone(const L3::VrfName& name);
    /// Brings a VRF's entry in line with what is known of it.
    void doUpdate(const L3::VrfName& name);
    void maybeClearLeftovers();

  private:
    class OrbAllVrfReadyStatus : public Orb::Reactor<ProtoVrfSm, AllVrfReadyStatus> {
      public:
        using Reactor::Reactor;
        void onAttribute(Orb::AttributeId id, const void* key) override;
    };
    class OrbProtoStatusDir : public Orb::Reactor<ProtoVrfSm, Orb::Dir> {
      public:
        using Reactor::Reactor;
        void onAttribute(Orb::AttributeId id, const void* key) override;
    };
    class OrbProtoVrfStatus : public Orb::Reactor<ProtoVrfSm, Rib::ProtoVrfStatus> {
      public:
        using Reactor::Reactor;
        void onAttribute(Orb::AttributeId id, const void* key) override;
    };
    class OrbRoom : public Orb::Reactor<ProtoVrfSm, OrbMemtab::Table> {
      public:
        using Reactor::Reactor;
        void onAttribute(Orb::AttributeId id, const void* key) override;
    };

    const Rib::ProtoVrfStatus* rib(const Orb::Name& name) const;
    void watchRib(const Orb::Name& name);
    void doUpdateAll();
    void forgetReadiness();
    bool hasLeftovers() const;
    bool isComplete() const;

    OrbAllVrfReadyStatus orbAllVrfReadyStatus_;
    OrbProtoStatusDir orbProtoStatusDir_;
    OrbRoom orbRoom_;
    std::map<Orb::Name, OrbProtoVrfStatus> ribs_;
};

} // namespace Routing::DirectNet
