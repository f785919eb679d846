#pragma once

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

/// An IPv4 address. Ordered numerically; the default is 0.0.0.0.
class IpAddr {
  public:
    static constexpr AddressFamily af = AddressFamily::ipv4;
    static constexpr unsigned bits = 32;

    constexpr IpAddr() = default;
    /// From a number in host order: 0x0a000001 is 10.0.0.1.
    constexpr explicit IpAddr(std::uint32_t value) : value_(value) {}
    /// From the first four bytes, network order.
    constexpr explicit IpAddr(const AddressBytes& bytes)
        : value_(std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16
                 | std::uint32_t{bytes[2]} << 8 | bytes[3]) {}

    /// Host order.
    constexpr std::uint32_t value() const { return value_; }
    /// Network order, the rest zero.
    constexpr AddressBytes bytes() const {
        return {static_cast<std::uint8_t>(value_ >> 24), static_cast<std::uint8_t>(value_ >> 16),
                static_cast<std::uint8_t>(value_ >> 8), static_cast<std::uint8_t>(value_)};
    }

    constexpr bool isZero() const { return value_ == 0; }
    /// Whether it lies in 169.254.0.0/16.
    constexpr bool isLinkLocal() const { return value_ >> 16 == 0xa9fe; }
    constexpr bool operator!() const { return isZero(); }

    /// The address with all bits behind the first `len` (0 to 32) cleared.
    constexpr IpAddr masked(unsigned len) const { return IpAddr(value_ & mask(len)); }
    /// The address with all bits behind the first `len` (0 to 32) set.
    constexpr IpAddr broadcast(unsigned len) const { return IpAddr(value_ | ~mask(len)); }

    std::uint64_t hash(std::uint64_t seed) const { return Orb::hashOf(value_, seed); }

    void appendTo(std::string& out) const { appendIpText(out, value_); }
    std::string toString() const { return Orb::plainText(*this); }
    /// A strict dotted quad. Throws ParseError.
    static IpAddr fromString(std::string_view text) { return IpAddr(parseIpText(text)); }

    friend constexpr bool operator==(IpAddr, IpAddr) = default;
    friend constexpr std::strong_ordering operator<=>(IpAddr, IpAddr) = default;

  private:
    static constexpr std::uint32_t mask(unsigned len) {
        return len == 0 ? 0 : ~std::uint32_t{0} << (bits - len);
    }

    std::uint32_t value_ = 0;
};

} // namespace Lanx
