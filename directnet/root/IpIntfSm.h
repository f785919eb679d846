#pragma once

#include <utility>

#include "directnet/model/Units.h"
#include "directnet/root/AddressMachine.h"
#include "platform/ip/Status.h"
#include "platform/orb/attribute/Declare.h"

namespace Routing::DirectNet {

/// Turns the IPv4 addresses of one interface that has a kernel device into contributions to its
/// VRF: per address the subnet, the address itself and, up to /30, the subnet's network and
/// broadcast addresses. An unnumbered interface contributes nothing for its primary address, which
/// belongs to the interface that it is borrowed from.
class IpIntfSm : public Orb::Entity, public AddressMachine<IpIntfSm, Traits::IPv4> {
    ORB_ENTITY(IpIntfSm, "Routing::DirectNet::IpIntfSm")
    ORB_CONSTRUCTOR((Lanx::IntfId, intfId), (Orb::Ptr<const Ip::IpIntfStatus>, ipIntfStatus),
                    (Orb::Ptr<IntfViaSetConfig>, intfViaSetConfig),
                    (Orb::Ptr<IntfBacklog>, intfBacklog))
    ORB_KEY(Lanx::IntfId, intfId)
    /// The primary address that was applied last, and whether the interface was unnumbered then.
    ORB_ATTRIBUTE(262, Lanx::IpAddrWithMask, prevActiveAddrWithMask)
    ORB_ATTRIBUTE(263, bool, prevUnnumberedIntf)
    ORB_ATTRIBUTE(264, bool, initialized)

  public:
    explicit IpIntfSm(Arguments arguments);
    ~IpIntfSm() override;

    const L3::VrfName& vrfName() const { return intfBacklog()->vrfName(); }
    const Orb::Ptr<const Ip::IpIntfStatus>& intfStatus() const { return ipIntfStatus(); }

    void handleActiveAddress(const Lanx::IpAddrWithMask& address);
    void handleSecondaryAddress(const Lanx::IpAddrWithMask& address);

    /// Moves the broadcast addresses between the route types. Applied to the primary address also
    /// of an unnumbered interface, and to secondary addresses whatever their value.
    void handleDirectedBroadcast();
    /// There may be room for the interface's via, which there was not when its addresses came.
    void handleRoom();

    void updateBcastRoute(const Lanx::IpAddrWithMask& address, bool withdraw);

    static bool yieldsNothing(const Lanx::IpAddrWithMask& address) { return address.isZero(); }

  private:
    friend AddressMachine;

    class OrbIpIntfStatus : public Orb::InputReactor<IpIntfSm, Ip::IpIntfStatus> {
      public:
        using InputReactor::InputReactor;
        void onAttribute(Orb::AttributeId id, const void* key) override;
    };

    void applyStatus();
    void withdrawStatus();
    /// The kind of broadcast routes that the interface has now, or that it has not.
    const RouteKind& broadcastKind(bool present) const;
    void withdrawFormerBroadcast(const Lanx::IpAddrWithMask& address);

    OrbIpIntfStatus orbIpIntfStatus_;
};

} // namespace Routing::DirectNet
