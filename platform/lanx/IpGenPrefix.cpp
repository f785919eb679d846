#include "platform/lanx/IpGenPrefix.h"

namespace Lanx {

IpGenPrefix::IpGenPrefix(const IpGenAddr& address, unsigned len)
    : addr_(address), len_(static_cast<std::uint8_t>(len)) {
    if (len > address.bits() || address != address.masked(len)) {
        throwInvalidPrefix();
    }
}

IpGenPrefix IpGenPrefix::covering(const IpGenAddr& address, unsigned len) {
    if (len > address.bits()) {
        throwInvalidPrefix();
    }
    IpGenPrefix prefix;
    prefix.addr_ = address.masked(len);
    prefix.len_ = static_cast<std::uint8_t>(len);
    return prefix;
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
