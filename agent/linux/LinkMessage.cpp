#include "agent/linux/LinkMessage.h"
#include "agent/base/Utf8.h"

#include <array>
#include <cstddef>
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

std::array<nla_policy, IFLA_MASTER + 1> makeLinkPolicy() {
    std::array<nla_policy, IFLA_MASTER + 1> policy{};
    policy[IFLA_IFNAME].type = NLA_STRING;
    policy[IFLA_MASTER].type = NLA_U32;
    policy[IFLA_MTU].type = NLA_U32;
    return policy;
}

Lanx::IntfId nameOf(nlattr* attribute) {
    auto length = static_cast<std::size_t>(nla_len(attribute));
    const auto* text = static_cast<const char*>(nla_data(attribute));
    return Lanx::IntfId(documentName({text, ::strnlen(text, length)}));
}

} // namespace

bool LinkMessage::fitsIpv6() const { return mtu >= leastIpv6Mtu; }

KernelDevicePatch LinkMessage::device() const {
    // Packets pass while the link is administratively up and has carrier.
    const bool running = (flags & IFF_UP) != 0 && (flags & IFF_RUNNING) != 0;
    KernelDevicePatch device;
    device.device.make() = name.name();
    device.running.make() = running;
    return device;
}

std::optional<LinkMessage> LinkMessage::parse(const nlmsghdr& header) {
    if (header.nlmsg_type != RTM_NEWLINK && header.nlmsg_type != RTM_DELLINK) {
        return std::nullopt;
    }
    static const auto policy = makeLinkPolicy();
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
    const Lanx::IntfId name = nameOf(attributes[IFLA_IFNAME]);
    if (!name) {
        return std::nullopt;
    }
    const auto number = [&](std::size_t type) {
        return attributes[type] ? nla_get_u32(attributes[type]) : 0;
    };
    return LinkMessage{.index = info->ifi_index,
                       .name = name,
                       .flags = info->ifi_flags,
                       .changed = info->ifi_change,
                       .master = static_cast<int>(number(IFLA_MASTER)),
                       .mtu = number(IFLA_MTU),
                       .removed = header.nlmsg_type == RTM_DELLINK};
}

} // namespace Agent::Linux
