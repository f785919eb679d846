#pragma once

#include "agent/linux/Address.h"
#include "agent/linux/AddressMessage.h"

#include <optional>
#include <unordered_map>
#include <unordered_set>

namespace Agent::Linux {

/// The IPv6 addresses of one link. The kernel has an address once a link, whatever its length. An
/// address that may not be used yet, or no more, is not counted as there.
class Ipv6Addresses {
  public:
    void add(const AddressMessage& message);
    void remove(const AddressMessage& message);

    bool isEmpty() const { return active_.empty(); }
    /// How the usable address `local` is counted, whatever length `local` has.
    std::optional<Address> ownOf(const Address& local) const;
    bool contains(const Address& own) const { return active_.contains(own); }

    /// Calls `visit` with every usable address, in no particular order.
    template <class Visit>
    void forEach(Visit&& visit) const {
        for (const auto& address : active_) {
            visit(address);
        }
    }

  private:
    /// Local address as a host prefix -> the address as it is counted.
    std::unordered_map<Address, Address, AddressHash> owns_;
    std::unordered_set<Address, AddressHash> active_;
};

} // namespace Agent::Linux
