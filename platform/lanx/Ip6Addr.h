#pragma once

#include <algorithm>
#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/lanx/AddressBytes.h"
#include "platform/lanx/AddressFamily.h"
#include "platform/lanx/AddressText.h"
#include "platform/lanx/Print.h"
#include "platform/orb/value/Hash.h"

namespace Lanx {

/// An IPv6 address. Ordered bytewise; the default is "::".
class Ip6Addr {
  public:
    static constexpr AddressFamily af = AddressFamily::ipv6;
    static constexpr unsigned bits = 128;

    constexpr Ip6Addr() = default;
    /// Network order.
    constexpr explicit Ip6Addr(const AddressBytes& bytes) : bytes_(bytes) {}

    /// Network order.
    constexpr const AddressBytes& bytes() const { return bytes_; }

    constexpr bool isZero() const { return bytes_ == AddressBytes{}; }
    /// Whether it lies in fe80::/10.
    constexpr bool isLinkLocal() const { return isLinkLocal6(bytes_); }
    constexpr bool operator!() const { return isZero(); }

    /// The address with all bits behind the first `len` (0 to 128) cleared.
    constexpr Ip6Addr masked(unsigned len) const { return Ip6Addr(maskedBytes(bytes_, len)); }

    std::uint64_t hash(std::uint64_t seed) const {
        Orb::Hasher hasher(seed);
        mixBytes(hasher, bytes_);
        return hasher.result();
    }

    void appendTo(std::string& out) const { appendIp6Text(out, bytes_); }
    std::string toString() const { return Orb::plainText(*this); }
    /// Any usual spelling without zone. Throws ParseError.
    static Ip6Addr fromString(std::string_view text) { return Ip6Addr(parseIp6Text(text)); }

    friend constexpr bool operator==(const Ip6Addr& a, const Ip6Addr& b) {
        return sameBytes(a.bytes_, b.bytes_);
    }
    friend constexpr std::strong_ordering operator<=>(const Ip6Addr& a, const Ip6Addr& b) {
        return compareBytes(a.bytes_, b.bytes_);
    }

  private:
    AddressBytes bytes_{};
};

} // namespace Lanx
