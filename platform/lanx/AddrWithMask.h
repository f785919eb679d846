#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/lanx/Prefix.h"
#include "platform/orb/value/Error.h"

namespace Lanx {

/// An interface address with its mask length. Ordered by address, then length. The default is the
/// zero address with length 0. `Addr` is IpAddr or Ip6Addr.
template <typename Addr>
class AddrWithMask {
  public:
    constexpr AddrWithMask() = default;

    /// Throws RangeError when the length is too long.
    AddrWithMask(Addr address, unsigned len)
        : addr_(address), len_(static_cast<std::uint8_t>(len)) {
        if (len > Addr::bits) {
            throw Orb::RangeError("AddrWithMask::len > " + std::to_string(Addr::bits)
                                  + " not allowed");
        }
    }

    constexpr AddressFamily af() const { return Addr::af; }
    constexpr Addr addr() const { return addr_; }
    constexpr unsigned len() const { return len_; }

    /// Whether the address, whatever the length, is zero.
    constexpr bool isZero() const { return addr_.isZero(); }
    constexpr bool isLinkLocal() const { return addr_.isLinkLocal(); }
    constexpr bool operator!() const { return *this == AddrWithMask(); }

    /// 10.1.1.5/24 lies in the subnet 10.1.1.0/24.
    Prefix<Addr> subnet() const { return Prefix<Addr>::covering(addr_, len_); }
    /// The address alone: 10.1.1.5/32.
    Prefix<Addr> hostPrefix() const { return Prefix<Addr>::host(addr_); }
    /// The first address of the subnet: 10.1.1.0.
    Addr networkAddr() const { return addr_.masked(len_); }
    /// The last address of the subnet: 10.1.1.255. IPv4 only.
    Addr broadcastAddr() const { return addr_.broadcast(len_); }

    std::uint64_t hash(std::uint64_t seed) const {
        Orb::Hasher hasher(seed);
        hasher.mixValue(addr_);
        hasher.mix(len_);
        return hasher.result();
    }

    void appendTo(std::string& out) const {
        addr_.appendTo(out);
        appendLength(out, len_);
    }
    std::string toString() const { return Orb::plainText(*this); }
    /// "ADDRESS/LEN". Throws ParseError, RangeError.
    static AddrWithMask fromString(std::string_view text) {
        const auto [address, len] = splitLength(text);
        return AddrWithMask(Addr::fromString(address), len);
    }

    friend constexpr bool operator==(const AddrWithMask&, const AddrWithMask&) = default;
    friend constexpr std::strong_ordering operator<=>(const AddrWithMask&,
                                                      const AddrWithMask&) = default;

  private:
    Addr addr_;
    std::uint8_t len_ = 0;
};

using IpAddrWithMask = AddrWithMask<IpAddr>;
using Ip6AddrWithMask = AddrWithMask<Ip6Addr>;

} // namespace Lanx
