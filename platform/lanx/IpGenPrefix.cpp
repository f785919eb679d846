#include "platform/lanx/IpGenPrefix.h"

namespace Lanx {

IpGenPrefix::IpGenPrefix(const IpGenAddr& address, unsigned len)
    : addr_(address), len_(static_cast<std::uint8_t>(len)) {
    if (len > address.bits() || address != address.masked(len)) {
        throw Orb::RangeError("Prefix::validAsPrefix != true not allowed");
    }
}

IpGenPrefix IpGenPrefix::covering(const IpGenAddr& address, unsigned len) {
    return {len <= address.bits() ? address.masked(len) : address, len};
}

std::uint64_t IpGenPrefix::hash(std::uint64_t seed) const {
    Orb::Hasher hasher(seed);
    mixBytes(hasher, addr_.bytes());
    hasher.mix(std::uint64_t{len_} << 8 | static_cast<std::uint64_t>(af()));
    return hasher.result();
}

void IpGenPrefix::appendTo(std::string& out) const {
    if (af() != AddressFamily::unset) {
        addr_.appendTo(out);
        appendLength(out, len_);
    }
}

IpGenPrefix IpGenPrefix::fromString(std::string_view text) {
    if (text.empty()) {
        return {};
    }
    return looksLikeIp6(text) ? IpGenPrefix(Ip6Prefix::fromString(text))
                              : IpGenPrefix(IpPrefix::fromString(text));
}

} // namespace Lanx
