#pragma once

#include "agent/linux/Address.h"

#include <cstdint>
#include <linux/netlink.h>
#include <optional>

namespace Agent::Linux {

/// What the kernel says of one address of one link: that it is so, or that it is gone.
struct AddressMessage {
    int index = 0;
    /// The link's own address.
    Address local;
    /// The peer's address where there is one, else the own. Its prefix is the connected subnet.
    Address remote;
    /// RT_SCOPE_*; the larger the narrower.
    std::uint8_t scope = 0;
    /// IFA_F_* bits.
    std::uint32_t flags = 0;
    bool removed = false;

    bool isSecondary() const;
    /// False for an IPv6 address that may not be used: detection of duplicates has not passed (and
    /// it is not used optimistically meanwhile), or has failed.
    bool isActive() const;
    /// The address as the agent counts it: one with a peer stands for itself alone.
    Address own() const { return local == remote ? local : local.host(); }

    /// Reads a message that lies whole in its buffer. Nothing if it is not about an IPv4 or IPv6
    /// address, or is malformed.
    static std::optional<AddressMessage> parse(const nlmsghdr& header);
};

} // namespace Agent::Linux
