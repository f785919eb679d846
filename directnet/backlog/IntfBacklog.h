#pragma once

#include <cstdint>
#include <initializer_list>
#include <utility>

#include "directnet/backlog/IntfIdAndPrefix.h"
#include "directnet/backlog/IntfIdSet.h"
#include "directnet/backlog/IntfViaSetKeyStatus.h"
#include "directnet/backlog/RouteKinds.h"
#include "platform/orb/attribute/Declare.h"
#include "platform/vrf/VrfId.h"
#include "platform/vrf/VrfName.h"

namespace Routing::DirectNet {

/// Where what a VRF learns about prefixes meets the one machine that writes its routes. Producers
/// record who contributes which address under which prefix (the prefix index) and by that mark the
/// pair of interface and prefix as work (the backlog); they never write routes themselves.
///
/// The entity has the VRF's via sets per interface too, and counts how often the backlog was
/// drained.
class IntfBacklog : public Orb::Entity {
    ORB_ENTITY(IntfBacklog, "Routing::DirectNet::IntfBacklog")
    ORB_CONSTRUCTOR((L3::VrfName, vrfName), (Vrf::VrfIdMap::VrfId, vrfId))
    ORB_KEY(Vrf::VrfIdMap::VrfId, vrfId)
    /// A member says: the prefix must be looked at again, the interface's part in it changed. One
    /// that is false was looked at and waits for room in the route table.
    ORB_MAP(260, IntfIdAndPrefix, bool, backlog)
    ORB_ATTRIBUTE(261, std::uint32_t, backlogEmpty)
    ORB_REFERENCES(262, IntfIdSet, intfIdsByPrefix)
    ORB_CHILD(263, IntfViaSetKeyStatus, intfViaSetKeyStatus4)
    ORB_CHILD(264, IntfViaSetKeyStatus, intfViaSetKeyStatus6)
    /// How many machines of the VRF wait for room in the route and via tables.
    ORB_ATTRIBUTE(265, std::uint32_t, waitingForRoom)

  public:
    using VrfId = Vrf::VrfIdMap::VrfId;

    explicit IntfBacklog(Arguments arguments);

    void handleInitialized();

    void doAddBacklog(Lanx::IntfId intfId, const Lanx::IpGenPrefix& prefix);

    /// Records a contributor of the prefix, or its new via set, and queues the prefix, also when
    /// nothing changed. A prefix of length 0 or of no family is ignored on purpose: it never
    /// becomes a connected route.
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

    /// Lives while a member is looked at, and tells whether it was queued again meanwhile.
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
    void fetchAhead(Lanx::IntfId intfId, Contributions contributions) const;

    Processing* processing_ = nullptr;
    bool closing_ = false;
};

inline Orb::Ptr<IntfBacklog> intfBacklogFactory(const L3::VrfName& vrfName,
                                                Vrf::VrfIdMap::VrfId vrfId) {
    return Orb::makePtr<IntfBacklog>(IntfBacklog::Arguments{vrfName, vrfId});
}

} // namespace Routing::DirectNet
