#pragma once

#include "agent/linux/AddressMessage.h"

#include <optional>
#include <unordered_map>

#include "platform/orb/value/Hash.h"

namespace Agent::Linux {

/// The IPv6 addresses of one link. The kernel has an address once a link, whatever its length. An
/// address of which the document says nothing is not counted as there.
class Ipv6Addresses {
  public:
    using Address = Lanx::Ip6AddrWithMask;
    using Entry = Edit<Ipv6InterfacePatch::Value>;

    void add(const Ipv6AddressMessage& message);
    void remove(const Ipv6AddressMessage& message);

    bool isEmpty() const { return entries_.empty(); }
    /// How the address `local` is counted.
    std::optional<Address> ownOf(const Lanx::Ip6Addr& local) const;
    /// What the document says of the address.
    Entry entry(const Address& own) const;

    /// Calls `visit` with every address, in no particular order.
    template <class Visit>
    void forEach(Visit&& visit) const {
        for (const auto& entry : entries_) {
            visit(entry.first);
        }
    }

    /// What the link has and does not use yet, or at all.
    struct Unused {
        Address own;
        std::string_view obstacle; ///< see obstacleTo()
    };
    using UnusedByLocal =
        std::unordered_map<Lanx::Ip6Addr, Unused, Orb::HashFunction<Lanx::Ip6Addr>>;
    const UnusedByLocal& unused() const { return unused_; }

  private:
    /// Local address -> the address as it is counted.
    std::unordered_map<Lanx::Ip6Addr, Address, Orb::HashFunction<Lanx::Ip6Addr>> owns_;
    std::unordered_map<Address, Entry, Orb::HashFunction<Address>> entries_;
    UnusedByLocal unused_;
};

} // namespace Agent::Linux
