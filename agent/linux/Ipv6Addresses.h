#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "agent/linux/AddressMessage.h"
#include "platform/orb/container/HashMap.h"

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
        for (const auto& [local, counted] : entries_) {
            visit(Address(local, counted.len));
        }
    }

    /// Calls `visit` with every address that may not be used, and why not; see obstacleTo().
    template <class Visit>
    void forEachUnused(Visit&& visit) const {
        for (const auto& [local, unused] : unused_) {
            visit(Address(local, unused.len), unused.obstacle);
        }
    }

  private:
    /// The length that an address is counted with, and what the document says of it.
    struct Counted {
        std::uint8_t len;
        Entry entry;
    };
    struct Unused {
        std::uint8_t len;
        std::string_view obstacle;
    };

    Orb::HashMap<Lanx::Ip6Addr, Counted> entries_; // by the local address
    Orb::HashMap<Lanx::Ip6Addr, Unused> unused_;   // the same of those that are not counted
};

} // namespace Agent::Linux
