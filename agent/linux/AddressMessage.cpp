#include "agent/linux/AddressMessage.h"

#include <array>
#include <cstring>
#include <linux/if_addr.h>
#include <linux/rtnetlink.h>
#include <netlink/attr.h>
#include <netlink/msg.h>
#include <sys/socket.h>

namespace Agent::Linux {

namespace {

std::array<nla_policy, IFA_FLAGS + 1> makePolicy() {
    std::array<nla_policy, IFA_FLAGS + 1> policy{};
    policy[IFA_FLAGS].type = NLA_U32;
    return policy;
}

/// The address in `attribute`, if it is there and as long as the family's addresses are.
std::optional<Address> addressOf(const nlattr* attribute, const ifaddrmsg& info) {
    Address address;
    address.family = info.ifa_family;
    address.length = info.ifa_prefixlen;
    if (!attribute || nla_len(attribute) != static_cast<int>(address.size())
        || address.length > address.hostLength()) {
        return std::nullopt;
    }
    std::memcpy(address.bytes.data(), nla_data(attribute), address.size());
    return address;
}

} // namespace

bool AddressMessage::isSecondary() const { return (flags & IFA_F_SECONDARY) != 0; }

bool AddressMessage::isActive() const {
    if ((flags & IFA_F_DADFAILED) != 0) {
        return false;
    }
    return (flags & IFA_F_TENTATIVE) == 0 || (flags & IFA_F_OPTIMISTIC) != 0;
}

std::optional<AddressMessage> AddressMessage::parse(const nlmsghdr& header) {
    if (header.nlmsg_type != RTM_NEWADDR && header.nlmsg_type != RTM_DELADDR) {
        return std::nullopt;
    }
    static const auto policy = makePolicy();
    std::array<nlattr*, IFA_FLAGS + 1> attributes{};
    // The library reads only, though it asks for a mutable header.
    auto* message = const_cast<nlmsghdr*>(&header);
    if (nlmsg_parse(message, sizeof(ifaddrmsg), attributes.data(), IFA_FLAGS, policy.data()) < 0) {
        return std::nullopt;
    }
    const auto* info = static_cast<const ifaddrmsg*>(nlmsg_data(message));
    if (info->ifa_family != AF_INET && info->ifa_family != AF_INET6) {
        return std::nullopt;
    }
    auto local = addressOf(attributes[IFA_LOCAL], *info);
    auto remote = addressOf(attributes[IFA_ADDRESS], *info);
    if ((!local && !remote) || info->ifa_index == 0) {
        return std::nullopt;
    }
    AddressMessage address;
    address.index = static_cast<int>(info->ifa_index);
    address.local = local ? *local : *remote;
    address.remote = remote ? *remote : *local;
    address.scope = info->ifa_scope;
    address.flags = attributes[IFA_FLAGS] ? nla_get_u32(attributes[IFA_FLAGS]) : info->ifa_flags;
    address.removed = header.nlmsg_type == RTM_DELADDR;
    if (address.local.isUnspecified()) {
        return std::nullopt;
    }
    return address;
}

} // namespace Agent::Linux
