#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <vector>

#include "agent/device/AgentRoot.h"
#include "agent/device/DeviceInputs.h"
#include "platform/orb/loop/ActivityManager.h"
#include "platform/orb/loop/Clock.h"
#include "platform/vaultdb/Folder.h"

namespace Bench {

/// An agent with 16 VRFs of 1024 interfaces each: running kernel devices that are listed in both
/// families, without addresses yet. Those are published straight into the input entities.
class Rig {
  public:
    static constexpr std::size_t vrfs = 16;
    static constexpr std::size_t interfaces = 1024;

    /// With a folder its tables are shared.
    explicit Rig(Orb::Ptr<Orb::Clock> clock, Orb::Ptr<Vaultdb::Folder> folder = nullptr);

    const L3::VrfName& vrfName(std::size_t vrf) const { return vrfs_[vrf].name; }
    static ::Vrf::VrfIdMap::VrfId vrfId(std::size_t vrf);

    Agent::DeviceInputs& inputs() { return inputs_; }
    const Agent::AgentRoot& root() const { return *root_; }

    /// The n-th IPv4 /24 address, spread over VRFs first, then interfaces. The first address of an
    /// interface is its primary, the others are secondaries.
    void addIpv4(std::size_t n);
    void delIpv4(std::size_t n);
    static Lanx::IpAddrWithMask ipv4(std::size_t n);

    /// The same for IPv6 /64 addresses.
    void addIpv6(std::size_t n);

    /// The n-th IPv4 virtual address, on 8 interfaces of its VRF.
    void addVirtualIp(std::size_t n);

    /// Leaks the n-th address's subnet into the 15 other VRFs.
    void addLeak(std::size_t n);

    /// Runs the agent until every backlog is empty and nothing is pending. Returns the longest
    /// single call in seconds.
    double settle();

  private:
    /// What publishes an interface's addresses knows of it.
    struct Interface {
        Lanx::IntfId intfId;
        Ip::IpIntfStatus* ipv4;
        Ip6::IntfStatus* ipv6;
    };
    struct Vrf {
        L3::VrfName name;
        std::vector<Interface> interfaces;
    };

    void addVrf(std::size_t vrf);
    const Interface& interface(std::size_t n) const;

    std::array<Vrf, vrfs> vrfs_;

    Orb::Ptr<Orb::Clock> clock_;
    Orb::ActivityManager activityManager_;
    Agent::DeviceInputs inputs_;
    std::unique_ptr<Agent::AgentRoot> root_;
};

} // namespace Bench
