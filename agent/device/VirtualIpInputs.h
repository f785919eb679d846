#pragma once

#include <map>
#include <set>

#include "agent/patch/DevicePatch.h"
#include "platform/virtualip/VirtualIp6Status.h"
#include "platform/virtualip/VirtualIpStatus.h"

namespace Agent {

/// The two families' collections of virtual addresses, told apart.
struct VirtualIp4Traits {
    using Address = Lanx::IpAddrWithMask;
    using Key = VirtualIp::VrfIpWithMaskPair;
    using Status = VirtualIp::VirtualIpStatus;
    static auto* add(Status& status, const Key& key) { return status.virtualIpIntfStatusIs(key); }
    static void remove(Status& status, const Key& key) { status.virtualIpIntfStatusDel(key); }
};
struct VirtualIp6Traits {
    using Address = Lanx::Ip6Addr;
    using Key = VirtualIp::VrfIpPair;
    using Status = VirtualIp::VirtualIp6Status;
    static auto* add(Status& status, const Key& key) { return status.virtualIp6IntfStatusIs(key); }
    static void remove(Status& status, const Key& key) { status.virtualIp6IntfStatusDel(key); }
};

/// The virtual addresses of one family that the agent is told of. They are published in one flat
/// collection; an index by VRF lets a VRF's go at the cost of what it has.
template <typename Traits>
class VirtualIpInputs {
  public:
    using Status = typename Traits::Status;
    using Address = typename Traits::Address;

    const Orb::Ptr<Status>& status() const { return status_; }

    void apply(const Edit<VirtualIpPatch<Address>>& patch);

  private:
    using Key = typename Traits::Key;

    void clear(const L3::VrfName& vrfName);
    void applyTo(const L3::VrfName& vrfName, const MapPatch<Address, InterfaceSetPatch>& patch);

    Orb::Ptr<Status> status_ = Orb::makePtr<Status>();
    std::map<L3::VrfName, std::set<Address>> addresses_;
};

extern template class VirtualIpInputs<VirtualIp4Traits>;
extern template class VirtualIpInputs<VirtualIp6Traits>;

} // namespace Agent
