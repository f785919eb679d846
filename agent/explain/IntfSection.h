#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "agent/explain/Contributions.h"
#include "agent/explain/KernelLinks.h"
#include "platform/virtualip/VrfIpPair.h"
#include "platform/virtualip/VrfIpWithMaskPair.h"

namespace Agent {

/// Walks the addresses of an interface in one VRF, a few a step: those that only the kernel has,
/// those that the agent is told of, and the virtual ones.
class IntfSection {
  public:
    struct Options {
        Lanx::IntfId intf;
        L3::VrfName vrf;
        std::optional<KernelLink> link{}; ///< the link, if it is in the VRF
        bool isThere = false;    ///< known to be in the VRF; else only if it has an address
        std::string elsewhere{}; ///< why none of the addresses is what was asked for
        bool ownOnly = false;    ///< no virtual addresses
    };

    /// Takes what the walk finds.
    class Sink {
      public:
        using Contributions = std::vector<ContributionRow>;

        virtual ~Sink() = default;

        /// Whether the address matters at all.
        virtual bool wants(const Lanx::IpGenAddrWithMask& address) const = 0;
        /// Comes before its addresses.
        virtual void interface(const InterfaceRow& row) = 0;
        virtual void address(const AddressRow& row, const Contributions& contributions) = 0;
    };

    IntfSection(const AgentView& view, Options options)
        : view_(view), options_(std::move(options)) {}

    const Options& options() const { return options_; }
    /// Whether the interface turned out to be there.
    bool isSaid() const { return isSaid_; }

    /// Hands the next address to the sink, or nothing this time. Returns false behind the last.
    bool step(Sink& sink);

  private:
    enum class Stage { begin, unpublished, primary, secondaries, ipv6, virtual4, virtual6, end };
    using Reasons = std::vector<std::string>;

    bool stepIn(Sink& sink, Stage stage);
    bool stepPrimary(Sink& sink);
    bool stepSecondary(Sink& sink);
    bool stepIpv6(Sink& sink);
    bool stepUnpublished(Sink& sink);
    template <typename Family, typename Tables, typename Key>
    bool stepVirtual(Sink& sink, const Tables& tables, std::optional<Key>& last);

    void appendInterface(Sink& sink);
    void appendAddress(Sink& sink, const Lanx::IpGenAddrWithMask& address, const char* role,
                       Reasons reasons);
    std::string placeObstacle(bool needsDevice);
    /// Whether the address was there at the start as one that only the kernel has.
    bool isUnpublished(const Lanx::IpGenAddrWithMask& address) const;
    /// The VRF of the link is not up; what is published under its name, if anything, is another's.
    bool isAnothers() const { return options_.link && !options_.link->obstacle.empty(); }
    std::optional<Lanx::NamespaceName> netns() const;
    std::string device() const;

    AgentView view_;
    Options options_;
    Stage stage_ = Stage::begin;
    bool isSaid_ = false;
    std::string vrfObstacle_; // found out when it is needed
    std::optional<Lanx::IpAddrWithMask> secondary_;
    std::optional<Lanx::Ip6AddrWithMask> ipv6_;
    std::size_t unpublished_ = 0;
    std::optional<VirtualIp::VrfIpWithMaskPair> virtual4_;
    std::optional<VirtualIp::VrfIpPair> virtual6_;
};

} // namespace Agent
