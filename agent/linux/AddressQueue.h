#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/lanx/AddrWithMask.h"

namespace Agent::Linux {

/// Addresses in the order in which they came, any of which may go again: what a queue of thousands
/// needs that is nearly always added to at its end and taken from at its front.
class AddressQueue {
  public:
    using Address = Lanx::IpAddrWithMask;
    /// What an address is known by.
    using Ticket = std::uint64_t;

    bool empty() const { return first_ == places_.size(); }
    /// The one that came first.
    const Address& front() const { return places_[first_].address; }

    /// The ticket is above those of all that came before.
    void append(Ticket ticket, const Address& address) {
        places_.push_back({ticket, address, false});
    }
    /// The address must be there.
    void remove(Ticket ticket);

  private:
    struct Place {
        Ticket ticket;
        Address address;
        bool gone;
    };

    /// Those that have gone stay until they are more than the others.
    std::vector<Place> places_;
    std::size_t first_ = 0;
    std::size_t gone_ = 0;
};

} // namespace Agent::Linux
