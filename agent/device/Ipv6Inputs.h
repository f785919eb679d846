#pragma once

#include "agent/patch/DevicePatch.h"
#include "platform/ip/Ip6Status.h"

namespace Agent {

/// The IPv6 interfaces that the agent is told of.
class Ipv6Inputs {
  public:
    const Orb::Ptr<Ip6::Status>& status() const { return status_; }

    void apply(const Edit<Ipv6Patch>& patch);

  private:
    static void applyTo(Ip6::VrfIp6IntfStatus& vrf,
                        const MapPatch<Lanx::IntfId, Ipv6InterfacePatch>& patch);
    static void applyTo(Ip6::IntfStatus& interface, const Ipv6InterfacePatch& patch);

    Orb::Ptr<Ip6::Status> status_ = Orb::makePtr<Ip6::Status>();
};

} // namespace Agent
