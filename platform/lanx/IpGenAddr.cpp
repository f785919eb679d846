#include "platform/lanx/IpGenAddr.h"

#include "platform/orb/value/Assert.h"

namespace Lanx {

IpAddr IpGenAddr::v4() const {
    ORB_ASSERT(af_ == AddressFamily::ipv4, "af == AddressFamily::ipv4");
    return IpAddr(bytes_);
}

Ip6Addr IpGenAddr::v6() const {
    ORB_ASSERT(af_ == AddressFamily::ipv6, "af == AddressFamily::ipv6");
    return Ip6Addr(bytes_);
}

void IpGenAddr::appendTo(std::string& out) const {
    if (af_ == AddressFamily::ipv4) {
        v4().appendTo(out);
    } else if (af_ == AddressFamily::ipv6) {
        v6().appendTo(out);
    }
}

IpGenAddr IpGenAddr::fromString(std::string_view text) {
    if (text.empty()) {
        return {};
    }
    return looksLikeIp6(text) ? IpGenAddr(Ip6Addr::fromString(text))
                              : IpGenAddr(IpAddr::fromString(text));
}

} // namespace Lanx
