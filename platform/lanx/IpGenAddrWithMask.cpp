#include "platform/lanx/IpGenAddrWithMask.h"

namespace Lanx {

IpGenAddrWithMask::IpGenAddrWithMask(const IpGenAddr& address, unsigned len)
    : addr_(address), len_(static_cast<std::uint8_t>(len)) {
    if (len > address.bits()) {
        throw Orb::RangeError("AddrWithMask::len > " + std::to_string(address.bits())
                              + " not allowed");
    }
}

std::uint64_t IpGenAddrWithMask::hash(std::uint64_t seed) const {
    Orb::Hasher hasher(seed);
    mixBytes(hasher, addr_.bytes());
    hasher.mix(std::uint64_t{len_} << 8 | static_cast<std::uint64_t>(af()));
    return hasher.result();
}

void IpGenAddrWithMask::appendTo(std::string& out) const {
    if (af() != AddressFamily::unset) {
        addr_.appendTo(out);
        appendLength(out, len_);
    }
}

IpGenAddrWithMask IpGenAddrWithMask::fromString(std::string_view text) {
    if (text.empty()) {
        return {};
    }
    return looksLikeIp6(text) ? IpGenAddrWithMask(Ip6AddrWithMask::fromString(text))
                              : IpGenAddrWithMask(IpAddrWithMask::fromString(text));
}

} // namespace Lanx
