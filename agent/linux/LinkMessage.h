#pragma once

#include <cstdint>
#include <linux/netlink.h>
#include <optional>
#include <sys/socket.h>

#include "agent/patch/DevicePatch.h"

namespace Agent::Linux {

/// What the kernel says of one link: that it is so, or that it is gone.
struct LinkMessage {
    static constexpr int family = AF_UNSPEC;

    int index = 0;
    /// Never empty; fit for a document (see documentName).
    Lanx::IntfId name;
    /// IFF_* bits now set.
    std::uint32_t flags = 0;
    /// IFF_* bits that the announced change touched; 0 in a listing, all ones for a new link.
    std::uint32_t changed = 0;
    /// Index of the bridge, bond or VRF device the link belongs to, 0 if none.
    int master = 0;
    /// Whether the master is a VRF device.
    bool isInVrf = false;
    /// The routing table of a VRF device, 0 if the link is none.
    std::uint32_t vrfTable = 0;
    /// Bytes of the largest packet; 0 if the message does not say.
    std::uint32_t mtu = 0;
    bool removed = false;

    /// Whether it is administratively up.
    bool isUp() const;
    /// Whether packets pass.
    bool isRunning() const;
    /// Whether packets are large enough for IPv6. If not, the kernel has no IPv6 on the link.
    bool fitsIpv6() const;
    /// Index of the VRF device that the link's addresses belong to: itself or its own master. 0 if
    /// they belong to the namespace.
    int vrfDevice() const;
    /// What the document says of the link.
    KernelDevicePatch device() const;

    /// Reads a message that lies whole in its buffer. Nothing if it is not about a link itself (a
    /// bridge tells of its ports in messages of the same type) or is malformed.
    static std::optional<LinkMessage> parse(const nlmsghdr& header);
};

} // namespace Agent::Linux
