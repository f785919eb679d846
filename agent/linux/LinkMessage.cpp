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
#include <string_view>
#include <sys/socket.h>

namespace Agent::Linux {

namespace {

constexpr std::uint32_t leastIpv6Mtu = 1280;

constexpr std::string_view vrfKind = "vrf";

template <int last>
using Attributes = std::array<nlattr*, last + 1>;

std::array<nla_policy, IFLA_LINKINFO + 1> makeLinkPolicy() {
    std::array<nla_policy, IFLA_LINKINFO + 1> policy{};
    policy[IFLA_IFNAME].type = NLA_STRING;
    policy[IFLA_MASTER].type = NLA_U32;
    policy[IFLA_MTU].type = NLA_U32;
    policy[IFLA_LINKINFO].type = NLA_NESTED;
    return policy;
}

std::string_view textOf(const nlattr* attribute) {
    if (attribute == nullptr) {
        return {};
    }
    const auto length = static_cast<std::size_t>(nla_len(attribute));
    const auto* text = static_cast<const char*>(nla_data(attribute));
    return {text, ::strnlen(text, length)};
}

/// What kind of link it is, and of which kind its master is.
void readKinds(nlattr* linkInfo, LinkMessage& message) {
    Attributes<IFLA_INFO_MAX> kinds{};
    if (linkInfo == nullptr
        || nla_parse_nested(kinds.data(), IFLA_INFO_MAX, linkInfo, nullptr) < 0) {
        return;
    }
    message.isInVrf = message.master != 0 && textOf(kinds[IFLA_INFO_SLAVE_KIND]) == vrfKind;
    Attributes<IFLA_VRF_MAX> vrf{};
    if (textOf(kinds[IFLA_INFO_KIND]) == vrfKind && kinds[IFLA_INFO_DATA] != nullptr
        && nla_parse_nested(vrf.data(), IFLA_VRF_MAX, kinds[IFLA_INFO_DATA], nullptr) == 0
        && vrf[IFLA_VRF_TABLE] != nullptr
        && nla_len(vrf[IFLA_VRF_TABLE]) >= static_cast<int>(sizeof(std::uint32_t))) {
        message.vrfTable = nla_get_u32(vrf[IFLA_VRF_TABLE]);
    }
}

} // namespace

bool LinkMessage::isUp() const { return (flags & IFF_UP) != 0; }

// It is administratively up and has carrier.
bool LinkMessage::isRunning() const { return isUp() && (flags & IFF_RUNNING) != 0; }

bool LinkMessage::fitsIpv6() const { return mtu >= leastIpv6Mtu; }

int LinkMessage::vrfDevice() const {
    if (vrfTable != 0) {
        return index;
    }
    return isInVrf ? master : 0;
}

KernelDevicePatch LinkMessage::device() const {
    KernelDevicePatch device;
    device.device.make() = name.name();
    device.running.make() = isRunning();
    return device;
}

std::optional<LinkMessage> LinkMessage::parse(const nlmsghdr& header) {
    if (header.nlmsg_type != RTM_NEWLINK && header.nlmsg_type != RTM_DELLINK) {
        return std::nullopt;
    }
    static const auto policy = makeLinkPolicy();
    Attributes<IFLA_LINKINFO> attributes{};
    // The library reads only, though it asks for a mutable header.
    auto* message = const_cast<nlmsghdr*>(&header);
    if (nlmsg_parse(message, sizeof(ifinfomsg), attributes.data(), IFLA_LINKINFO, policy.data())
        < 0) {
        return std::nullopt;
    }
    const auto* info = static_cast<const ifinfomsg*>(nlmsg_data(message));
    if (info->ifi_family != AF_UNSPEC || info->ifi_index <= 0 || !attributes[IFLA_IFNAME]) {
        return std::nullopt;
    }
    const Lanx::IntfId name(documentName(textOf(attributes[IFLA_IFNAME])));
    if (!name) {
        return std::nullopt;
    }
    const auto number = [&](std::size_t type) {
        return attributes[type] ? nla_get_u32(attributes[type]) : 0;
    };
    LinkMessage link{.index = info->ifi_index,
                     .name = name,
                     .flags = info->ifi_flags,
                     .changed = info->ifi_change,
                     .master = static_cast<int>(number(IFLA_MASTER)),
                     .mtu = number(IFLA_MTU),
                     .removed = header.nlmsg_type == RTM_DELLINK};
    readKinds(attributes[IFLA_LINKINFO], link);
    return link;
}

} // namespace Agent::Linux
