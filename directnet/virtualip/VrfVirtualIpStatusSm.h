#pragma once

#include <utility>

#include "directnet/backlog/IntfBacklog.h"
#include "directnet/backlog/IntfViaSetConfig.h"
#include "directnet/backlog/RoomWaiter.h"
#include "directnet/virtualip/VrfVirtualIpStatus.h"
#include "platform/orb/container/HashMap.h"

namespace Routing::DirectNet {

/// The constructor attributes of VrfVirtualIpStatusSm, of which one has a name per family.
template <typename Family>
class VrfVirtualIpArguments;

template <>
class VrfVirtualIpArguments<Traits::IPv4> {
    ORB_CONSTRUCTOR((Orb::Ptr<const Ipv4::VrfVirtualIpStatus>, vrfVirtualIpStatus),
                    (Orb::Ptr<IntfViaSetConfig>, intfViaSetConfig),
                    (Orb::Ptr<IntfBacklog>, intfBacklog))

  public:
    const Ipv4::VrfVirtualIpStatus& table() const { return *vrfVirtualIpStatus(); }

  protected:
    explicit VrfVirtualIpArguments(Arguments arguments) : arguments_(std::move(arguments)) {}
    ~VrfVirtualIpArguments() = default;
};

template <>
class VrfVirtualIpArguments<Traits::IPv6> {
    ORB_CONSTRUCTOR((Orb::Ptr<const Ipv6::VrfVirtualIpStatus>, vrfVirtualIp6Status),
                    (Orb::Ptr<IntfViaSetConfig>, intfViaSetConfig),
                    (Orb::Ptr<IntfBacklog>, intfBacklog))

  public:
    const Ipv6::VrfVirtualIpStatus& table() const { return *vrfVirtualIp6Status(); }

  protected:
    explicit VrfVirtualIpArguments(Arguments arguments) : arguments_(std::move(arguments)) {}
    ~VrfVirtualIpArguments() = default;
};

/// Turns the virtual addresses of one VRF and family into contributions to its backlog: per
/// interface that carries an address a receive route of the address and, for IPv4 and while the
/// table says so, the address's subnet. Zero and link-local addresses yield nothing and take no via
/// sets.
///
/// From the table to the routes:
///   OrbVrfVirtualIpStatus       an address comes to the table or leaves it: so does its nested
///                               machine
///   OrbVirtualIpIntfStatusSm    an interface comes to the address or leaves it
///   handleVirtualIpIntfStatus   decides for one (address, interface) pair, whatever changed
template <typename Family>
class VrfVirtualIpStatusSm : public Orb::Entity, public VrfVirtualIpArguments<Family> {
  public:
    using Virtual = VirtualIpTraits<Family>;
    using Key = typename Virtual::Key;
    using AddrWithMask = typename Family::AddrWithMask;
    using typename VrfVirtualIpArguments<Family>::Arguments;

    /// Watches one virtual address for its VRF's machine. However it goes, because the address left
    /// the table or because the machine goes, it withdraws the address from all its interfaces;
    /// from then on the address counts as absent, whatever the table says.
    class OrbVirtualIpIntfStatusSm
        : public Orb::InputMemberReactor<VrfVirtualIpStatusSm, typename Virtual::IntfStatus> {
      public:
        using IntfStatus = typename Virtual::IntfStatus;
        using Member = Orb::InputMemberReactor<VrfVirtualIpStatusSm, IntfStatus>;

        OrbVirtualIpIntfStatusSm(VrfVirtualIpStatusSm* sm, Orb::Ptr<const IntfStatus> status);

        void onAttribute(Orb::AttributeId id, const void* key) override;
        /// The address has another object now, which may lack interfaces that the old one had.
        void notifierIs(Orb::Ptr<const IntfStatus> status) override;
        void orbDoZombieReactors(bool zombie) override;
        void handleVirtualIpIntfStatusDeletion();

        /// The interfaces on which the address contributes. It holds one via-set reference for
        /// each, however often it was added.
        const Orb::HashMap<Lanx::IntfId, bool>& contributesOn() const { return contributesOn_; }

      private:
        friend VrfVirtualIpStatusSm;

        Orb::HashMap<Lanx::IntfId, bool> contributesOn_;
    };

    ORB_ENTITY(VrfVirtualIpStatusSm, Virtual::machineName)
    /// The machine's own via sets, apart from those of the VRF's interfaces.
    ORB_CHILD(261, IntfViaSetKeyStatus, ivskStatus)
    ORB_REACTORS(262, typename VrfVirtualIpStatusSm::OrbVirtualIpIntfStatusSm,
                 virtualIpIntfStatusSm)
    ORB_ATTRIBUTE(263, bool, initialized)

  public:
    explicit VrfVirtualIpStatusSm(Arguments arguments);
    ~VrfVirtualIpStatusSm() override;

    void handleInitialized();
    /// The address came into the table or left it, or its object was replaced.
    void handleVrfVirtualIpStatus(const Key& key);
    /// Every address of the table.
    void handleVrfVirtualIpStatus();
    /// The interface came to the address or left it.
    void handleVirtualIpIntfStatus(const Key& key, Lanx::IntfId intfId);
    void handleSubnetRouteEnabled();
    /// There may be room for vias of interfaces, which there was not when they came.
    void handleRoom() { handleVrfVirtualIpStatus(); }

    static bool yieldsNothing(const AddrWithMask& address) {
        return address.isZero() || address.isLinkLocal();
    }

    /// What one (address, interface) pair contributes. Nothing while there is no room for the
    /// interface's via.
    void addContributions(OrbVirtualIpIntfStatusSm& nested, Lanx::IntfId intfId,
                          const AddrWithMask& address);
    /// `nested` may be null.
    void withdrawContributions(OrbVirtualIpIntfStatusSm* nested, Lanx::IntfId intfId,
                               const AddrWithMask& address);

    Orb::Ptr<IntfViaSetKeyStatus> newIvskStatus(Lanx::AddressFamily af) { return ivskStatusIs(af); }

    void orbDoZombieReactors(bool zombie) override;

    friend std::ostream& operator<<(std::ostream& out, const VrfVirtualIpStatusSm& sm) {
        return out << sm.table().name();
    }

  private:
    class OrbVrfVirtualIpStatus
        : public Orb::Reactor<VrfVirtualIpStatusSm, VrfVirtualIpStatus<Family>> {
      public:
        using Table = VrfVirtualIpStatus<Family>;
        using Reactor = Orb::Reactor<VrfVirtualIpStatusSm, Table>;
        using Reactor::Reactor;
        void onAttribute(Orb::AttributeId id, const void* key) override;
        void notifierIs(Orb::Ptr<const Table> table) override;
    };

    /// The interface's via sets, made if there are none; empty while there is no room for its via.
    IntfViaSetKey viaSetKeyOrWait(Lanx::IntfId intfId);
    void addSubnet(const IntfViaSetKey& viaSets, const AddrWithMask& address);
    void delSubnet(Lanx::IntfId intfId, const AddrWithMask& address);

    RoomWaiter<VrfVirtualIpStatusSm> room_;
    OrbVrfVirtualIpStatus orbVrfVirtualIpStatus_;
};

namespace Ipv4 {
using VrfVirtualIpStatusSm = DirectNet::VrfVirtualIpStatusSm<Traits::IPv4>;
}
namespace Ipv6 {
using VrfVirtualIpStatusSm = DirectNet::VrfVirtualIpStatusSm<Traits::IPv6>;
}

extern template class VrfVirtualIpStatusSm<Traits::IPv4>;
extern template class VrfVirtualIpStatusSm<Traits::IPv6>;

} // namespace Routing::DirectNet
