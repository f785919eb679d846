#pragma once

#include <map>

#include "agent/device/Ipv4Interface.h"
#include "agent/patch/DevicePatch.h"
#include "platform/ip/Status.h"
#include "platform/orb/container/HashMap.h"

namespace Agent {

/// The IPv4 interfaces that the agent is told of.
class Ipv4Inputs {
  public:
    const Orb::Ptr<Ip::Status>& status() const { return status_; }

    void apply(const Edit<Ipv4Patch>& patch);

  private:
    using VrfPatch = MapPatch<Lanx::IntfId, Ipv4InterfacePatch>;

    void applyTo(const L3::VrfName& vrfName, const VrfPatch& patch);

    Orb::Ptr<Ip::Status> status_ = Orb::makePtr<Ip::Status>();
    std::map<L3::VrfName, Orb::HashMap<Lanx::IntfId, Ipv4Interface>> interfaces_;
};

} // namespace Agent
