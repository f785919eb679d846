#pragma once

#include <cstdint>
#include <initializer_list>
#include <utility>

#include "directnet/backlog/IntfIdAndPrefix.h"
#include "directnet/backlog/IntfViaSetKeyStatus.h"
#include "directnet/backlog/PrefixIndex.h"
#include "directnet/backlog/RouteKinds.h"
#include "platform/orb/attribute/Declare.h"
#include "platform/vrf/VrfId.h"
#include "platform/vrf/VrfName.h"

namespace Routing::DirectNet {

/// The pending work and the prefix index of one VRF. Producers (the interface and virtual address
/// machines, the leak receiver) record which interface contributes which address to which prefix:
/// the prefix index. Each change there queues the pair of interface and prefix: the backlog. They
/// never write routes themselves; IntfBacklogSm does, which works through the backlog.
///
/// The entity also holds the VRF's via sets per interface, and counts how often the backlog was
/// drained.
class IntfBacklog : public Orb::Entity {
    ORB_ENTITY(IntfBacklog, "Routing::DirectNet::IntfBacklog")
    ORB_CONSTRUCTOR((L3::VrfName, vrfName), (Vrf::VrfIdMap::VrfId, vrfId))
    ORB_KEY(Vrf::VrfIdMap::VrfId, vrfId)
    /// The pairs to be worked through: the interface's contribution to the prefix changed. The
    /// value is false while the pair was processed and waits for room in the route table.
    ORB_MAP(260, IntfIdAndPrefix, bool, backlog)
    ORB_ATTRIBUTE(261, std::uint32_t, backlogEmpty)
    ORB_REFERENCES_IN(PrefixIndex, 262, IntfIdSet, intfIdsByPrefix)
    ORB_CHILD(263, IntfViaSetKeyStatus, intfViaSetKeyStatus4)
    ORB_CHILD(264, IntfViaSetKeyStatus, intfViaSetKeyStatus6)
    /// How many machines of the VRF wait for room in the route and via tables.
    ORB_ATTRIBUTE(265, std::uint32_t, waitingForRoom)

  public:
    using VrfId = Vrf::VrfIdMap::VrfId;

    explicit IntfBacklog(Arguments arguments);

    void handleInitialized();

    void doAddBacklog(Lanx::IntfId intfId, const Lanx::IpGenPrefix& prefix);

    /// A prefix of length 0 or of no family never becomes a connected route.
    static bool isRoutable(const Lanx::IpGenPrefix& prefix) {
        return prefix.af() != Lanx::AddressFamily::unset && prefix.len() != 0;
    }

    /// Records a contributor of the prefix, or its new via set, and queues the prefix, also when
    /// nothing changed. A prefix that is not routable is ignored on purpose.
    void addToIntfIdsByPrefix(Lanx::IntfId intfId, const Lanx::IpGenPrefix& prefix,
                              const Lanx::IpGenAddrWithMask& addrWithMask, Fib::RouteType routeType,
                              Rib::ViaSetKey viaSetKey, VrfId sourceVrfId, bool isVirtual);

    /// A route that an address yields.
    struct Contribution {
        Lanx::IpGenPrefix prefix;
        const RouteKind& kind;
    };
    using Contributions = std::initializer_list<Contribution>;

    /// The same for several routes of one address of this VRF.
    void addToIntfIdsByPrefix(const IntfViaSetKey& viaSets,
                              const Lanx::IpGenAddrWithMask& addrWithMask,
                              Contributions contributions, bool isVirtual);

    /// Takes a contributor away. One that is not there leaves no trace and queues nothing.
    void delFromIntfIdsByPrefix(Lanx::IntfId intfId, const Lanx::IpGenPrefix& prefix,
                                const Lanx::IpGenAddrWithMask& addrWithMask,
                                Fib::RouteType routeType, VrfId sourceVrfId, bool isVirtual);

    /// The same for several routes of one address of this VRF.
    void delFromIntfIdsByPrefix(Lanx::IntfId intfId, const Lanx::IpGenAddrWithMask& addrWithMask,
                                Contributions contributions, bool isVirtual);

    /// Made while one pair is processed; tells whether it was queued again meanwhile.
    class Processing {
      public:
        Processing(IntfBacklog& backlog, const IntfIdAndPrefix& member)
            : backlog_(backlog), member_(member) {
            backlog_.processing_ = this;
        }
        Processing(const Processing&) = delete;
        Processing& operator=(const Processing&) = delete;
        ~Processing() { backlog_.processing_ = nullptr; }

        bool queuedAgain() const { return queuedAgain_; }

      private:
        friend class IntfBacklog;

        IntfBacklog& backlog_;
        const IntfIdAndPrefix& member_;
        bool queuedAgain_ = false;
    };

    const Orb::Ptr<IntfViaSetKeyStatus>& intfViaSetKeyStatusFromAf(Lanx::AddressFamily af) const;

    /// The prefix index with what is installed for its prefixes.
    PrefixIndex& prefixIndex() { return intfIdsByPrefix_; }

    void backlogEmptyInc(std::uint32_t n) { backlogEmptyIs(backlogEmpty() + n); }

    void waitForRoom();
    void endWaitForRoom();

    /// The VRF is being taken down: its via sets are gone, while its contributors are yet to be
    /// withdrawn. Nothing may refer to them anew.
    bool closing() const { return closing_; }
    void closingIs(bool closing) { closing_ = closing; }

    friend std::ostream& operator<<(std::ostream& out, const IntfBacklog& backlog) {
        return out << backlog.vrfName();
    }

  private:
    /// Where a pair of interface and prefix belongs in the index and in the backlog.
    struct Tags {
        Orb::HashTag prefix;
        Orb::HashTag member;
    };
    static constexpr std::size_t maxContributions = 4;

    static Tags tagsOf(Lanx::IntfId intfId, const Lanx::IpGenPrefix& prefix) {
        return {Orb::HashTag::of(prefix), Orb::HashTag::of(IntfIdAndPrefix(intfId, prefix))};
    }
    template <typename Visit>
    void forEachAhead(Lanx::IntfId intfId, Contributions contributions, Visit visit) const;

    void add(const Lanx::IpGenPrefix& prefix, const IntfIdAndAddr& contributor,
             Rib::ViaSetKey viaSetKey, const Tags& tags);
    void del(const Lanx::IpGenPrefix& prefix, const IntfIdAndAddr& contributor, const Tags& tags);
    void queue(const IntfIdAndPrefix& member, Orb::HashTag tag);

    Processing* processing_ = nullptr;
    bool closing_ = false;
};

inline Orb::Ptr<IntfBacklog> intfBacklogFactory(const L3::VrfName& vrfName,
                                                Vrf::VrfIdMap::VrfId vrfId) {
    return Orb::makePtr<IntfBacklog>(IntfBacklog::Arguments{vrfName, vrfId});
}

} // namespace Routing::DirectNet
