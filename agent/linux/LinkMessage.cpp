#include "agent/linux/LinkMessage.h"
#include "agent/base/Utf8.h"

#include <array>
#include <cstring>
#include <linux/if.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <netlink/attr.h>
#include <netlink/msg.h>
#include <sys/socket.h>

namespace Agent::Linux {

namespace {

constexpr std::uint32_t leastIpv6Mtu = 1280;

std::array<nla_policy, IFLA_MASTER + 1> makePolicy() {
    std::array<nla_policy, IFLA_MASTER + 1> policy{};
    policy[IFLA_IFNAME].type = NLA_STRING;
    policy[IFLA_MASTER].type = NLA_U32;
    policy[IFLA_MTU].type = NLA_U32;
    return policy;
}

std::string nameOf(nlattr* attribute) {
    auto length = static_cast<std::size_t>(nla_len(attribute));
    const auto* text = static_cast<const char*>(nla_data(attribute));
    return documentName({text, ::strnlen(text, length)});
}

} // namespace

bool LinkMessage::isRunning() const { return (flags & IFF_UP) != 0 && (flags & IFF_RUNNING) != 0; }

bool LinkMessage::fitsIpv6() const { return mtu >= leastIpv6Mtu; }

std::optional<LinkMessage> LinkMessage::parse(const nlmsghdr& header) {
    if (header.nlmsg_type != RTM_NEWLINK && header.nlmsg_type != RTM_DELLINK) {
        return std::nullopt;
    }
    static const auto policy = makePolicy();
    std::array<nlattr*, IFLA_MASTER + 1> attributes{};
    // The library reads only, though it asks for a mutable header.
    auto* message = const_cast<nlmsghdr*>(&header);
    if (nlmsg_parse(message, sizeof(ifinfomsg), attributes.data(), IFLA_MASTER, policy.data())
        < 0) {
        return std::nullopt;
    }
    const auto* info = static_cast<const ifinfomsg*>(nlmsg_data(message));
    if (info->ifi_family != AF_UNSPEC || info->ifi_index <= 0 || !attributes[IFLA_IFNAME]) {
        return std::nullopt;
    }
    LinkMessage link;
    link.index = info->ifi_index;
    link.name = nameOf(attributes[IFLA_IFNAME]);
    link.flags = info->ifi_flags;
    link.changed = info->ifi_change;
    if (attributes[IFLA_MASTER]) {
        link.master = static_cast<int>(nla_get_u32(attributes[IFLA_MASTER]));
    }
    if (attributes[IFLA_MTU]) {
        link.mtu = nla_get_u32(attributes[IFLA_MTU]);
    }
    link.removed = header.nlmsg_type == RTM_DELLINK;
    if (link.name.empty()) {
        return std::nullopt;
    }
    return link;
}

} // namespace Agent::Linux
