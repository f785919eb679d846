#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

#include "platform/lanx/IpGenAddr.h"
#include "platform/lanx/Prefix.h"

namespace Lanx {

/// A subnet of either family, or none: 18 bytes without alignment. All bits behind the first len()
/// are zero. Ordered by family, address, length. The default is all zero with the family unset; its
/// text is empty.
class IpGenPrefix {
  public:
    constexpr IpGenPrefix() = default;
    constexpr IpGenPrefix(const IpPrefix& prefix)
        : addr_(prefix.addr()), len_(static_cast<std::uint8_t>(prefix.len())) {}
    constexpr IpGenPrefix(const Ip6Prefix& prefix)
        : addr_(prefix.addr()), len_(static_cast<std::uint8_t>(prefix.len())) {}

    /// Throws RangeError when the length is too long for the family or a host bit is set.
    IpGenPrefix(const IpGenAddr& address, unsigned len);

    /// The prefix of that length which the address lies in. Throws RangeError when it is too long.
    static IpGenPrefix covering(const IpGenAddr& address, unsigned len);

    /// The prefix of that length whose address is known to have no host bit set.
    static constexpr IpGenPrefix unchecked(const IpGenAddr& address, std::uint8_t len) {
        IpGenPrefix prefix;
        prefix.addr_ = address;
        prefix.len_ = len;
        return prefix;
    }

    /// The prefix that holds nothing but the address.
    static IpGenPrefix host(const IpGenAddr& address) { return covering(address, address.bits()); }

    constexpr AddressFamily af() const { return addr_.af(); }
    constexpr const IpGenAddr& addr() const { return addr_; }
    constexpr unsigned len() const { return len_; }

    /// True for the default, so not for 0.0.0.0/0 and not for ::/0.
    constexpr bool operator!() const { return !addr_; }

    /// False for an address of another family.
    bool contains(const IpGenAddr& address) const { return address.masked(len_) == addr_; }
    bool contains(const IpGenPrefix& other) const {
        return other.len_ >= len_ && contains(other.addr_);
    }

    std::uint64_t hash(std::uint64_t seed) const {
        Orb::Hasher hasher(seed);
        mixBytes(hasher, addr_.bytes());
        hasher.mix(std::uint64_t{len_} << 8 | static_cast<std::uint64_t>(af()));
        return hasher.result();
    }

    void appendTo(std::string& out) const;
    std::string toString() const { return Orb::plainText(*this); }
    /// "ADDRESS/LEN"; the empty text is the unset prefix. Throws ParseError, RangeError.
    static IpGenPrefix fromString(std::string_view text);

    friend constexpr bool operator==(const IpGenPrefix&, const IpGenPrefix&) = default;
    friend constexpr std::strong_ordering operator<=>(const IpGenPrefix&,
                                                      const IpGenPrefix&) = default;

  private:
    IpGenAddr addr_;
    std::uint8_t len_ = 0;
};

static_assert(sizeof(IpGenPrefix) == 18 && std::is_trivially_copyable_v<IpGenPrefix>);

} // namespace Lanx
