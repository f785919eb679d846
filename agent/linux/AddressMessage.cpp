#include "agent/linux/AddressMessage.h"

#include <array>
#include <cstring>
#include <linux/if_addr.h>
#include <linux/rtnetlink.h>
#include <netlink/attr.h>
#include <netlink/msg.h>

namespace Agent::Linux {

namespace {

std::array<nla_policy, IFA_FLAGS + 1> makeAddressPolicy() {
    std::array<nla_policy, IFA_FLAGS + 1> policy{};
    policy[IFA_FLAGS].type = NLA_U32;
    return policy;
}

/// The address in `attribute`, if it is there and as long as the family's addresses are.
template <typename Addr>
std::optional<Lanx::AddrWithMask<Addr>> addressOf(const nlattr* attribute, const ifaddrmsg& info) {
    constexpr int size = Addr::bits / 8;
    if (!attribute || nla_len(attribute) != size || info.ifa_prefixlen > Addr::bits) {
        return std::nullopt;
    }
    Lanx::AddressBytes bytes{};
    std::memcpy(bytes.data(), nla_data(attribute), size);
    return Lanx::AddrWithMask<Addr>(Addr(bytes), info.ifa_prefixlen);
}

} // namespace

template <typename Addr>
bool AddressMessage<Addr>::isSecondary() const {
    return (flags & IFA_F_SECONDARY) != 0;
}

template <typename Addr>
std::optional<AddressMessage<Addr>> AddressMessage<Addr>::parse(const nlmsghdr& header) {
    if (header.nlmsg_type != RTM_NEWADDR && header.nlmsg_type != RTM_DELADDR) {
        return std::nullopt;
    }
    // The library reads only, though it asks for a mutable header.
    auto* message = const_cast<nlmsghdr*>(&header);
    if (!nlmsg_valid_hdr(message, sizeof(ifaddrmsg))) {
        return std::nullopt;
    }
    const auto* info = static_cast<const ifaddrmsg*>(nlmsg_data(message));
    if (info->ifa_family != family || info->ifa_index == 0) {
        return std::nullopt;
    }
    static const auto policy = makeAddressPolicy();
    std::array<nlattr*, IFA_FLAGS + 1> attributes{};
    if (nlmsg_parse(message, sizeof(ifaddrmsg), attributes.data(), IFA_FLAGS, policy.data()) < 0) {
        return std::nullopt;
    }
    const auto local = addressOf<Addr>(attributes[IFA_LOCAL], *info);
    const auto remote = addressOf<Addr>(attributes[IFA_ADDRESS], *info);
    if ((!local && !remote) || (local ? local : remote)->isZero()) {
        return std::nullopt;
    }
    return AddressMessage{.index = static_cast<int>(info->ifa_index),
                          .local = local ? *local : *remote,
                          .remote = remote ? *remote : *local,
                          .scope = info->ifa_scope,
                          .flags = attributes[IFA_FLAGS] ? nla_get_u32(attributes[IFA_FLAGS])
                                                         : info->ifa_flags,
                          .removed = header.nlmsg_type == RTM_DELADDR};
}

std::string_view obstacleTo(const Ipv6AddressMessage& message) {
    if ((message.flags & IFA_F_DADFAILED) != 0) {
        return "duplicate";
    }
    const bool isTentative =
        (message.flags & IFA_F_TENTATIVE) != 0 && (message.flags & IFA_F_OPTIMISTIC) == 0;
    return isTentative ? "tentative" : "";
}

Edit<Ipv6InterfacePatch::Value> documentEntry(const Ipv6AddressMessage& message) {
    return obstacleTo(message).empty() ? Edit<bool>::to(true) : Edit<bool>();
}

template struct AddressMessage<Lanx::IpAddr>;
template struct AddressMessage<Lanx::Ip6Addr>;

} // namespace Agent::Linux
