#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/lanx/Ip6Addr.h"
#include "platform/lanx/IpAddr.h"

namespace Lanx {

/// An address of either family, or none. Ordered by family, then bytewise. The default is all zero
/// with the family unset; its text is empty.
class IpGenAddr {
  public:
    constexpr IpGenAddr() = default;
    constexpr IpGenAddr(IpAddr address) : af_(IpAddr::af), bytes_(address.bytes()) {}
    constexpr IpGenAddr(const Ip6Addr& address) : af_(Ip6Addr::af), bytes_(address.bytes()) {}

    constexpr AddressFamily af() const { return af_; }
    /// 32 or 128; 0 when unset.
    constexpr unsigned bits() const { return addressBits(af_); }
    /// Network order, an IPv4 address at the head and the rest zero.
    constexpr const AddressBytes& bytes() const { return bytes_; }

    /// The address as one of its family; asserts that it is.
    IpAddr v4() const;
    Ip6Addr v6() const;

    constexpr bool isZero() const { return bytes_ == AddressBytes{}; }
    /// Whether it lies in 169.254.0.0/16 or fe80::/10.
    constexpr bool isLinkLocal() const {
        return af_ == AddressFamily::ipv4 ? IpAddr(bytes_).isLinkLocal() : isLinkLocal6(bytes_);
    }
    /// True for the default, so not for 0.0.0.0 and not for "::".
    constexpr bool operator!() const { return af_ == AddressFamily::unset; }

    /// The address with all bits behind the first `len` (0 to bits()) cleared.
    IpGenAddr masked(unsigned len) const {
        IpGenAddr result = *this;
        result.bytes_ = maskedBytes(bytes_, len);
        return result;
    }

    std::uint64_t hash(std::uint64_t seed) const {
        Orb::Hasher hasher(seed);
        mixBytes(hasher, bytes_);
        hasher.mixValue(af_);
        return hasher.result();
    }

    void appendTo(std::string& out) const;
    std::string toString() const { return Orb::plainText(*this); }
    /// The empty text is the unset address. Throws ParseError.
    static IpGenAddr fromString(std::string_view text);

    friend constexpr bool operator==(const IpGenAddr& a, const IpGenAddr& b) {
        return a.af_ == b.af_ && sameBytes(a.bytes_, b.bytes_);
    }
    friend constexpr std::strong_ordering operator<=>(const IpGenAddr& a, const IpGenAddr& b) {
        return a.af_ != b.af_ ? a.af_ <=> b.af_ : compareBytes(a.bytes_, b.bytes_);
    }

  private:
    AddressFamily af_ = AddressFamily::unset;
    AddressBytes bytes_{};
};

} // namespace Lanx
