#pragma once

#include "agent/document/DevicePatch.h"
#include "platform/ip/Ip6Status.h"

namespace Agent {

/// The IPv6 interfaces that the agent is told of.
class Ipv6Inputs {
  public:
    const Orb::Ptr<Ip6::Status>& status() const { return status_; }

    void apply(const Change<Ipv6Patch>& patch);

  private:
    using AddressPatch = MapPatch<Lanx::Ip6AddrWithMask, bool>;

    static void applyTo(Ip6::VrfIp6IntfStatus& vrf,
                        const MapPatch<Lanx::IntfId, AddressPatch>& patch);
    static void applyTo(Ip6::IntfStatus& interface, const AddressPatch& patch);

    Orb::Ptr<Ip6::Status> status_ = Orb::makePtr<Ip6::Status>();
};

} // namespace Agent
