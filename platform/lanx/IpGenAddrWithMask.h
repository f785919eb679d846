#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

#include "platform/lanx/AddrWithMask.h"
#include "platform/lanx/IpGenAddr.h"
#include "platform/lanx/IpGenPrefix.h"

namespace Lanx {

/// An interface address of either family with its mask length, or none: 18 bytes without alignment.
/// Ordered by family, address, length. The default is all zero with the family unset; its text is
/// empty.
class IpGenAddrWithMask {
  public:
    constexpr IpGenAddrWithMask() = default;
    constexpr IpGenAddrWithMask(const IpAddrWithMask& address)
        : addr_(address.addr()), len_(static_cast<std::uint8_t>(address.len())) {}
    constexpr IpGenAddrWithMask(const Ip6AddrWithMask& address)
        : addr_(address.addr()), len_(static_cast<std::uint8_t>(address.len())) {}

    /// Throws RangeError when the length is too long for the family.
    IpGenAddrWithMask(const IpGenAddr& address, unsigned len);

    constexpr AddressFamily af() const { return addr_.af(); }
    constexpr const IpGenAddr& addr() const { return addr_; }
    constexpr unsigned len() const { return len_; }

    /// Whether the address, whatever the length, is zero.
    constexpr bool isZero() const { return addr_.isZero(); }
    constexpr bool isLinkLocal() const { return addr_.isLinkLocal(); }
    /// True for the default, so not for 0.0.0.0/0 and not for ::/0.
    constexpr bool operator!() const { return !addr_; }

    /// 10.1.1.5/24 lies in the subnet 10.1.1.0/24.
    IpGenPrefix subnet() const { return IpGenPrefix::covering(addr_, len_); }
    /// The address alone: 10.1.1.5/32.
    IpGenPrefix hostPrefix() const { return IpGenPrefix::host(addr_); }

    std::uint64_t hash(std::uint64_t seed) const;

    void appendTo(std::string& out) const;
    std::string toString() const { return Orb::plainText(*this); }
    /// "ADDRESS/LEN"; the empty text is the unset address. Throws ParseError, RangeError.
    static IpGenAddrWithMask fromString(std::string_view text);

    friend constexpr bool operator==(const IpGenAddrWithMask&, const IpGenAddrWithMask&) = default;
    friend constexpr std::strong_ordering operator<=>(const IpGenAddrWithMask&,
                                                      const IpGenAddrWithMask&) = default;

  private:
    IpGenAddr addr_;
    std::uint8_t len_ = 0;
};

static_assert(sizeof(IpGenAddrWithMask) == 18 && std::is_trivially_copyable_v<IpGenAddrWithMask>);

} // namespace Lanx
