#pragma once

#include "agent/linux/Ipv4Addresses.h"
#include "agent/linux/Ipv6Addresses.h"
#include "agent/linux/LinkMessage.h"

namespace Agent::Linux {

/// One link as the kernel last told of it, with its addresses.
struct LinkModel {
    LinkMessage link;
    Ipv4Addresses ipv4;
    Ipv6Addresses ipv6;

    /// Takes the next address of a listing, in the listing's order.
    void append(const Ipv4AddressMessage& message) { ipv4.append(message); }
    void append(const Ipv6AddressMessage& message) { ipv6.add(message); }
};

} // namespace Agent::Linux
