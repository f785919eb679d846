#pragma once

#include <optional>
#include <vector>

#include "agent/linux/LinkModel.h"
#include "agent/patch/DevicePatch.h"
#include "platform/orb/container/HashMap.h"

namespace Agent::Linux {

/// What the device document holds of one interface name. Publishing brings it to what a link now
/// means and tells the difference, so that the document is always the one a fresh start would give.
class PublishedInterface {
  public:
    using Ipv4 = Lanx::IpAddrWithMask;
    using Ipv6 = Lanx::Ip6AddrWithMask;

    /// What may differ from the document.
    struct Touched {
        /// Everything, whatever addresses stand here.
        bool whole = false;
        std::vector<Ipv4> ipv4;
        std::vector<Ipv6> ipv6;
    };
    /// What is to change in the interface's entries of a VRF.
    struct Addresses {
        Edit<Ipv4InterfacePatch> ipv4;
        Edit<Ipv6InterfacePatch> ipv6;
    };

    /// What is to change in the interface's entry in its namespace. `model` is the link that now
    /// has the name, null if none has.
    Edit<KernelDevicePatch> publishDevice(const LinkModel* model);

    /// The VRF in which its addresses stand, if they stand in any.
    const std::optional<L3::VrfName>& vrf() const { return vrf_; }
    /// Addresses that stand in another VRF are withdrawn first. Costs as much as `touched` names,
    /// or the addresses of both sides if that is everything.
    Addresses publishAddresses(const L3::VrfName& vrf, const LinkModel& model, Touched touched);
    Addresses withdrawAddresses();

  private:
    /// What the document says of addresses.
    template <typename Address, typename Value>
    using Said = Orb::HashMap<Address, Edit<Value>>;

    Edit<Ipv4InterfacePatch> publishIpv4(const LinkModel& model, std::vector<Ipv4> touched);
    Edit<Ipv4InterfacePatch> withdrawIpv4();
    Edit<Ipv6InterfacePatch> publishIpv6(const LinkModel& model, const std::vector<Ipv6>& touched);
    Edit<Ipv6InterfacePatch> withdrawIpv6();

    Edit<KernelDevicePatch> device_;
    std::optional<L3::VrfName> vrf_;
    std::optional<Ipv4> primary_;
    Said<Ipv4, Ipv4InterfacePatch::Secondaries::Value> secondaries_;
    Said<Ipv6, Ipv6InterfacePatch::Value> ipv6_;
};

} // namespace Agent::Linux
