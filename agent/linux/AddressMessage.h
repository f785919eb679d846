#pragma once

#include <cstdint>
#include <linux/netlink.h>
#include <optional>
#include <string_view>
#include <sys/socket.h>

#include "agent/patch/DevicePatch.h"

namespace Agent::Linux {

/// An address as the agent counts it: one with a peer stands for itself alone. `remote` is the
/// peer's, or the address again.
template <typename Addr>
Lanx::AddrWithMask<Addr> ownAddress(const Lanx::AddrWithMask<Addr>& local,
                                    const Lanx::AddrWithMask<Addr>& remote) {
    return local == remote ? local : Lanx::AddrWithMask<Addr>(local.addr(), Addr::bits);
}

/// What the kernel says of one address of one link: that it is so, or that it is gone. `Addr` is
/// Lanx::IpAddr or Lanx::Ip6Addr.
template <typename Addr>
struct AddressMessage {
    using Address = Lanx::AddrWithMask<Addr>;
    static constexpr int family = Addr::af == Lanx::AddressFamily::ipv4 ? AF_INET : AF_INET6;

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
    Address own() const { return ownAddress(local, remote); }

    /// Reads a message that lies whole in its buffer. Nothing if it is not about an address of the
    /// family, or is malformed.
    static std::optional<AddressMessage> parse(const nlmsghdr& header);
};

extern template struct AddressMessage<Lanx::IpAddr>;
extern template struct AddressMessage<Lanx::Ip6Addr>;

using Ipv4AddressMessage = AddressMessage<Lanx::IpAddr>;
using Ipv6AddressMessage = AddressMessage<Lanx::Ip6Addr>;

/// Why an address may not be used: "tentative" while detection of duplicates has not passed (and it
/// is not used optimistically meanwhile), "duplicate" when that has failed. Empty if it may.
std::string_view obstacleTo(const Ipv6AddressMessage& message);

/// What the document says of an address. Nothing if it may not be used.
Edit<Ipv6InterfacePatch::Value> documentEntry(const Ipv6AddressMessage& message);

} // namespace Agent::Linux
