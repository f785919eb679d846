#pragma once

#include "directnet/backlog/IntfBacklog.h"
#include "platform/orb/attribute/Declare.h"
#include "platform/orb/container/HashMap.h"
#include "platform/orb/container/OrderedMap.h"

namespace Routing::DirectNet {

class ReceiveRouteLeakSm;

/// Follows the backlog of one VRF as far as what the VRF leaks depends on it: the contributors of
/// the prefixes that it leaks, and which of its interfaces have addresses of their own. It decides
/// nothing itself: whatever changes, it has the machine look at the contributors concerned.
///
/// To the machine it is the reactor `OrbIntfBacklog`.
class LeakSource : public Orb::MemberReactor<ReceiveRouteLeakSm, IntfBacklog> {
    ORB_TYPE(LeakSource, "Routing::DirectNet::ReceiveRouteLeakSm::OrbIntfBacklog")

  public:
    /// Watches the contributors of one leaked prefix.
    class OrbIntfIdsByPrefix : public Orb::MemberReactor<LeakSource, IntfIdSet> {
        ORB_TYPE(OrbIntfIdsByPrefix,
                 "Routing::DirectNet::ReceiveRouteLeakSm::OrbIntfBacklog::OrbIntfIdsByPrefix")

      public:
        OrbIntfIdsByPrefix(LeakSource* source, Orb::Ptr<const IntfIdSet> set);
        void onAttribute(Orb::AttributeId id, const void* key) override;
    };
    ORB_REACTORS(258, OrbIntfIdsByPrefix, intfIdsByPrefix)

  public:
    LeakSource(ReceiveRouteLeakSm* sm, Orb::Ptr<const IntfBacklog> backlog);

    void handleInitialized();
    /// The VRF begins or ceases to leak: while it leaks nothing there is nothing to follow.
    void handleLeaking();
    void onAttribute(Orb::AttributeId id, const void* key) override;
    void orbDoZombieReactors(bool zombie) override;

    /// Follows the prefix's contributors if the prefix is leaked and has any, else stops.
    void handlePrefix(const Lanx::IpGenPrefix& prefix);

    /// A contributor of a prefix that is followed came or went.
    void handleIntfIdAndAddr(const Lanx::IpGenPrefix& prefix, const IntfIdAndAddr& iiaa,
                             bool added);

    /// The VRF's backlog is gone, and with it the routes leaked from it and into it.
    void handleDelete();

  private:
    class OrbOwnAddresses : public Orb::Reactor<LeakSource, IntfViaSetKeyStatus> {
      public:
        using Reactor::Reactor;
        void onAttribute(Orb::AttributeId id, const void* key) override;
    };

    void handleOwnAddresses(Lanx::IntfId intfId, const IntfViaSetKeyStatus& status);
    void noteVirtual(const IntfIdAndAddr& contributor, bool contributes);
    void noteVirtuals(const IntfIdSet& set, bool contribute);

    OrbOwnAddresses orbOwnAddresses4_;
    OrbOwnAddresses orbOwnAddresses6_;
    /// By interface, the virtual addresses that contribute to followed prefixes: whether these are
    /// leaked depends on the interface's own addresses.
    Orb::HashMap<Lanx::IntfId, Orb::OrderedMap<IntfIdAndAddr, bool>> virtuals_;
};

} // namespace Routing::DirectNet
