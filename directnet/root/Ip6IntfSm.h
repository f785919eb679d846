#pragma once

#include <utility>

#include "directnet/model/Units.h"
#include "directnet/root/AddressMachine.h"
#include "platform/ip/Ip6Status.h"
#include "platform/orb/attribute/Declare.h"

namespace Routing::DirectNet {

/// Turns the IPv6 addresses of one interface that has a kernel device into contributions to its
/// VRF: per address the subnet and the address itself. Zero and link-local addresses yield nothing.
class Ip6IntfSm : public Orb::Entity, public AddressMachine<Ip6IntfSm, Traits::IPv6> {
    ORB_ENTITY(Ip6IntfSm, "Routing::DirectNet::Ip6IntfSm")
    ORB_CONSTRUCTOR((Lanx::IntfId, intfId), (Orb::Ptr<const Ip6::IntfStatus>, ip6IntfStatus),
                    (Orb::Ptr<IntfViaSetConfig>, intfViaSetConfig),
                    (Orb::Ptr<IntfBacklog>, intfBacklog))
    ORB_KEY(Lanx::IntfId, intfId)
    ORB_ATTRIBUTE(262, bool, initialized)

  public:
    explicit Ip6IntfSm(Arguments arguments);
    ~Ip6IntfSm() override;

    const L3::VrfName& vrfName() const { return intfBacklog()->vrfName(); }
    const Orb::Ptr<const Ip6::IntfStatus>& intfStatus() const { return ip6IntfStatus(); }

    void handleIp6Address(const Lanx::Ip6AddrWithMask& address);
    /// There may be room for the interface's via, which there was not when its addresses came.
    void handleRoom() { applyStatus(); }

    static bool yieldsNothing(const Lanx::Ip6AddrWithMask& address) {
        return address.isZero() || address.isLinkLocal();
    }

  private:
    friend AddressMachine;

    class OrbIp6IntfStatus : public Orb::InputReactor<Ip6IntfSm, Ip6::IntfStatus> {
      public:
        using InputReactor::InputReactor;
        void onAttribute(Orb::AttributeId id, const void* key) override;
    };

    void applyStatus();
    void withdrawStatus();

    OrbIp6IntfStatus orbIp6IntfStatus_;
};

} // namespace Routing::DirectNet
