#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/lanx/Ip6Addr.h"
#include "platform/lanx/IpAddr.h"

namespace Lanx {

[[noreturn]] void throwInvalidPrefix();

/// A subnet: an address whose bits behind the first len() are zero. Ordered by address, then
/// length. The default is the zero-length prefix. `Addr` is IpAddr or Ip6Addr.
template <typename Addr>
class Prefix {
  public:
    constexpr Prefix() = default;

    /// Throws RangeError when the length is too long or a host bit is set.
    Prefix(Addr address, unsigned len) : addr_(address), len_(static_cast<std::uint8_t>(len)) {
        if (len > Addr::bits || address != address.masked(len)) {
            throwInvalidPrefix();
        }
    }

    /// The prefix of that length which the address lies in. Throws RangeError when it is too long.
    static Prefix covering(Addr address, unsigned len) {
        if (len > Addr::bits) {
            throwInvalidPrefix();
        }
        Prefix prefix;
        prefix.addr_ = address.masked(len);
        prefix.len_ = static_cast<std::uint8_t>(len);
        return prefix;
    }

    /// The prefix that holds nothing but the address.
    static Prefix host(Addr address) { return covering(address, Addr::bits); }

    constexpr AddressFamily af() const { return Addr::af; }
    constexpr Addr addr() const { return addr_; }
    constexpr unsigned len() const { return len_; }

    constexpr bool operator!() const { return *this == Prefix(); }

    bool contains(Addr address) const { return address.masked(len_) == addr_; }
    bool contains(const Prefix& other) const { return other.len_ >= len_ && contains(other.addr_); }

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
    static Prefix fromString(std::string_view text) {
        const auto [address, len] = splitLength(text);
        return Prefix(Addr::fromString(address), len);
    }

    friend constexpr bool operator==(const Prefix&, const Prefix&) = default;
    friend constexpr std::strong_ordering operator<=>(const Prefix&, const Prefix&) = default;

  private:
    Addr addr_;
    std::uint8_t len_ = 0;
};

using IpPrefix = Prefix<IpAddr>;
using Ip6Prefix = Prefix<Ip6Addr>;

} // namespace Lanx
