#include "agent/install/InstallWire.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <linux/if_link.h>
#include <linux/neighbour.h>
#include <linux/netconf.h>
#include <linux/rtnetlink.h>
#include <netlink/attr.h>
#include <netlink/msg.h>
#include <sys/socket.h>

namespace Agent {

namespace {

using Lanx::AddressBytes;
using Lanx::AddressFamily;
using Lanx::IpGenAddr;
using Lanx::IpGenPrefix;

/// The attributes of a message behind a fixed part of `size` bytes, up to the type `last`.
class Attributes {
  public:
    Attributes(const nlmsghdr& header, int size, int last) {
        // The library reads only, though it asks for a mutable header.
        auto* message = const_cast<nlmsghdr*>(&header);
        isGood_ = nlmsg_valid_hdr(message, size) != 0
                  && nlmsg_parse(message, size, found_.data(), last, nullptr) >= 0;
        fixed_ = nlmsg_data(message);
    }

    bool isGood() const { return isGood_; }
    /// The fixed part of a good message.
    template <typename Info>
    const Info& fixed() const {
        return *static_cast<const Info*>(fixed_);
    }
    const nlattr* find(int type) const { return found_[static_cast<std::size_t>(type)]; }
    /// The number in an attribute; nothing if there is none, or one of another size.
    template <typename Number>
    std::optional<Number> number(int type) const {
        const nlattr* const attribute = find(type);
        if (attribute == nullptr || nla_len(attribute) != sizeof(Number)) {
            return std::nullopt;
        }
        Number value{};
        std::memcpy(&value, nla_data(attribute), sizeof value);
        return value;
    }

  private:
    std::array<nlattr*, RTA_MAX + 1> found_{}; // no kind of message has more
    const void* fixed_ = nullptr;
    bool isGood_ = false;
};

/// The prefix of an attribute; that of length 0 where there is no attribute.
std::optional<IpGenPrefix> prefixOf(const nlattr* attribute, int family, unsigned length) {
    const unsigned bits = family == AF_INET ? 32 : 128;
    if (length > bits || (attribute == nullptr && length != 0)) {
        return std::nullopt;
    }
    AddressBytes bytes{};
    if (attribute != nullptr) {
        if (static_cast<unsigned>(nla_len(attribute)) != bits / 8) {
            return std::nullopt;
        }
        std::memcpy(bytes.data(), nla_data(attribute), bits / 8);
    }
    const IpGenAddr address =
        family == AF_INET ? IpGenAddr(Lanx::IpAddr(bytes)) : IpGenAddr(Lanx::Ip6Addr(bytes));
    return IpGenPrefix::covering(address, length);
}

std::optional<EntryMessage> parseRoute(const nlmsghdr& header) {
    const Attributes attributes(header, sizeof(rtmsg), RTA_TABLE);
    if (!attributes.isGood()) {
        return std::nullopt;
    }
    const auto& info = attributes.fixed<rtmsg>();
    if ((info.rtm_family != AF_INET && info.rtm_family != AF_INET6)
        || (info.rtm_flags & RTM_F_CLONED) != 0) {
        return std::nullopt;
    }
    const auto prefix = prefixOf(attributes.find(RTA_DST), info.rtm_family, info.rtm_dst_len);
    if (!prefix) {
        return std::nullopt;
    }
    const bool isIpv4 = info.rtm_family == AF_INET;
    return EntryMessage{
        .entry = {.type = info.rtm_type,
                  .scope = isIpv4 ? info.rtm_scope : std::uint8_t{RT_SCOPE_UNIVERSE},
                  .link = attributes.number<int>(RTA_OIF).value_or(0),
                  .table = attributes.number<std::uint32_t>(RTA_TABLE).value_or(info.rtm_table),
                  .metric = attributes.number<std::uint32_t>(RTA_PRIORITY).value_or(0),
                  .prefix = *prefix},
        .protocol = info.rtm_protocol,
        .removed = header.nlmsg_type == RTM_DELROUTE};
}

std::optional<EntryMessage> parseProxy(const nlmsghdr& header) {
    const Attributes attributes(header, sizeof(ndmsg), NDA_PROTOCOL);
    if (!attributes.isGood()) {
        return std::nullopt;
    }
    const auto& info = attributes.fixed<ndmsg>();
    if (info.ndm_family != AF_INET6 || (info.ndm_flags & NTF_PROXY) == 0) {
        return std::nullopt;
    }
    const auto prefix = prefixOf(attributes.find(NDA_DST), AF_INET6, Lanx::Ip6Addr::bits);
    if (!prefix) {
        return std::nullopt;
    }
    return EntryMessage{.entry = {.isProxy = true, .link = info.ndm_ifindex, .prefix = *prefix},
                        .protocol = attributes.number<std::uint8_t>(NDA_PROTOCOL).value_or(0),
                        .removed = header.nlmsg_type == RTM_DELNEIGH};
}

/// Writes messages one behind the other.
class Writer {
  public:
    explicit Writer(std::vector<std::byte>& out) : out_(out) {}

    template <typename Info>
    void begin(int type, int flags, std::uint32_t sequence, const Info& info) {
        begin_ = out_.size();
        nlmsghdr header{};
        header.nlmsg_type = static_cast<std::uint16_t>(type);
        header.nlmsg_flags = static_cast<std::uint16_t>(NLM_F_REQUEST | flags);
        header.nlmsg_seq = sequence;
        append(&header, sizeof header);
        append(&info, sizeof info);
    }
    void attribute(int type, const void* data, std::size_t size) {
        const nlattr header{static_cast<std::uint16_t>(sizeof(nlattr) + size),
                            static_cast<std::uint16_t>(type)};
        append(&header, sizeof header);
        append(data, size);
    }
    template <typename Number>
    void number(int type, Number value) {
        attribute(type, &value, sizeof value);
    }
    void address(int type, const IpGenAddr& address) {
        attribute(type, address.bytes().data(), address.bits() / 8);
    }
    void end() {
        const auto size = static_cast<std::uint32_t>(out_.size() - begin_);
        std::memcpy(out_.data() + begin_ + offsetof(nlmsghdr, nlmsg_len), &size, sizeof size);
    }

  private:
    void append(const void* data, std::size_t size) {
        const auto* bytes = static_cast<const std::byte*>(data);
        out_.insert(out_.end(), bytes, bytes + size);
        out_.resize(out_.size() + (NLMSG_ALIGN(size) - size));
    }

    std::vector<std::byte>& out_;
    std::size_t begin_ = 0;
};

int familyNumber(const IpGenPrefix& prefix) {
    return prefix.af() == AddressFamily::ipv4 ? AF_INET : AF_INET6;
}

// For adding: whatever is there already, of whichever protocol, stays as it is.
constexpr int addFlags = NLM_F_CREATE | NLM_F_EXCL;

void appendRoute(Writer& writer, const KernelEntry& entry, std::uint8_t protocol, bool add,
                 std::uint32_t sequence) {
    rtmsg info{};
    info.rtm_family = static_cast<std::uint8_t>(familyNumber(entry.prefix));
    info.rtm_dst_len = static_cast<std::uint8_t>(entry.prefix.len());
    info.rtm_protocol = protocol;
    info.rtm_scope = entry.scope;
    info.rtm_type = entry.type;
    writer.begin(add ? RTM_NEWROUTE : RTM_DELROUTE, add ? addFlags : 0, sequence, info);
    writer.address(RTA_DST, entry.prefix.addr());
    writer.number(RTA_TABLE, entry.table);
    if (entry.link != 0) {
        writer.number(RTA_OIF, entry.link);
    }
    if (entry.metric != 0) {
        writer.number(RTA_PRIORITY, entry.metric);
    }
    writer.end();
}

void appendProxy(Writer& writer, const KernelEntry& entry, std::uint8_t protocol, bool add,
                 std::uint32_t sequence) {
    ndmsg info{};
    info.ndm_family = AF_INET6;
    info.ndm_ifindex = entry.link;
    info.ndm_state = NUD_PERMANENT;
    info.ndm_flags = NTF_PROXY;
    writer.begin(add ? RTM_NEWNEIGH : RTM_DELNEIGH, add ? addFlags : 0, sequence, info);
    writer.address(NDA_DST, entry.prefix.addr());
    if (add) {
        writer.number(NDA_PROTOCOL, protocol);
    }
    writer.end();
}

/// The kernel's explanation of a refusal; empty if it gives none.
std::string explanationOf(const nlmsghdr& header) {
    if ((header.nlmsg_flags & NLM_F_ACK_TLVS) == 0) {
        return {};
    }
    const auto& error = *reinterpret_cast<const nlmsgerr*>(
        reinterpret_cast<const std::byte*>(&header) + NLMSG_HDRLEN);
    // The request's body stands in between, unless only its head was asked for.
    std::size_t skip = sizeof(nlmsgerr);
    if ((header.nlmsg_flags & NLM_F_CAPPED) == 0) {
        skip +=
            NLMSG_ALIGN(std::max<std::size_t>(error.msg.nlmsg_len, NLMSG_HDRLEN)) - NLMSG_HDRLEN;
    }
    if (header.nlmsg_len <= NLMSG_HDRLEN + skip) {
        return {};
    }
    std::array<nlattr*, NLMSGERR_ATTR_MAX + 1> attributes{};
    auto* const first = reinterpret_cast<nlattr*>(
        const_cast<std::byte*>(reinterpret_cast<const std::byte*>(&error) + skip));
    const auto size = static_cast<int>(header.nlmsg_len - NLMSG_HDRLEN - skip);
    if (nla_parse(attributes.data(), NLMSGERR_ATTR_MAX, first, size, nullptr) < 0
        || attributes[NLMSGERR_ATTR_MSG] == nullptr) {
        return {};
    }
    const nlattr* const text = attributes[NLMSGERR_ATTR_MSG];
    const auto* const words = static_cast<const char*>(nla_data(text));
    return {words, ::strnlen(words, static_cast<std::size_t>(nla_len(text)))};
}

} // namespace

std::optional<EntryMessage> parseEntryMessage(const nlmsghdr& header) {
    switch (header.nlmsg_type) {
    case RTM_NEWROUTE:
    case RTM_DELROUTE:
        return parseRoute(header);
    case RTM_NEWNEIGH:
    case RTM_DELNEIGH:
        return parseProxy(header);
    default:
        return std::nullopt;
    }
}

std::optional<RefusalMessage> parseRefusalMessage(const nlmsghdr& header) {
    const bool isEnd = header.nlmsg_type == NLMSG_DONE;
    const std::size_t size = isEnd ? 0 : sizeof(nlmsgerr);
    if ((!isEnd && header.nlmsg_type != NLMSG_ERROR) || header.nlmsg_len < NLMSG_HDRLEN + size) {
        return std::nullopt;
    }
    int code = 0; // comes first in both
    if (header.nlmsg_len >= NLMSG_HDRLEN + sizeof code) {
        std::memcpy(&code, reinterpret_cast<const std::byte*>(&header) + NLMSG_HDRLEN, sizeof code);
    }
    RefusalMessage message{.sequence = header.nlmsg_seq, .code = 0, .words = {}};
    if (code < 0) {
        message.code = static_cast<int>(-static_cast<unsigned>(code));
    }
    if (message.code != 0) {
        message.words = isEnd ? "" : explanationOf(header);
        const std::string codeWords = std::strerror(message.code);
        message.words += message.words.empty() ? codeWords : " (" + codeWords + ')';
    }
    return message;
}

std::optional<ProxySettingMessage> parseProxySettingMessage(const nlmsghdr& header) {
    if (header.nlmsg_type != RTM_NEWNETCONF) {
        return std::nullopt;
    }
    const Attributes attributes(header, sizeof(netconfmsg), NETCONFA_PROXY_NEIGH);
    if (!attributes.isGood() || attributes.fixed<netconfmsg>().ncm_family != AF_INET6) {
        return std::nullopt;
    }
    const auto link = attributes.number<int>(NETCONFA_IFINDEX);
    if (!link) {
        return std::nullopt;
    }
    const auto flag = [&](int type) {
        const auto value = attributes.number<int>(type);
        return value ? std::optional(*value != 0) : std::nullopt;
    };
    return ProxySettingMessage{*link, flag(NETCONFA_PROXY_NEIGH), flag(NETCONFA_FORWARDING)};
}

void appendEntryRequest(std::vector<std::byte>& out, const KernelEntry& entry,
                        std::uint8_t protocol, bool add, std::uint32_t sequence) {
    Writer writer(out);
    if (entry.isProxy) {
        appendProxy(writer, entry, protocol, add, sequence);
    } else {
        appendRoute(writer, entry, protocol, add, sequence);
    }
}

std::vector<std::byte> listingRequest(Listing listing, std::uint8_t protocol,
                                      std::uint32_t sequence) {
    std::vector<std::byte> request;
    Writer writer(request);
    switch (listing) {
    case Listing::links:
        writer.begin(RTM_GETLINK, NLM_F_DUMP, sequence, ifinfomsg{});
        // Counters are most of a link's listing and nobody reads them.
        writer.number(IFLA_EXT_MASK, std::uint32_t{RTEXT_FILTER_SKIP_STATS});
        break;
    case Listing::proxySettings: {
        netconfmsg info{};
        info.ncm_family = AF_INET6;
        writer.begin(RTM_GETNETCONF, NLM_F_DUMP, sequence, info);
        break;
    }
    case Listing::ipv4Routes:
    case Listing::ipv6Routes: {
        rtmsg info{};
        info.rtm_family = listing == Listing::ipv4Routes ? AF_INET : AF_INET6;
        info.rtm_protocol = protocol;
        writer.begin(RTM_GETROUTE, NLM_F_DUMP, sequence, info);
        break;
    }
    case Listing::proxies: {
        ndmsg info{};
        info.ndm_family = AF_INET6;
        info.ndm_flags = NTF_PROXY;
        writer.begin(RTM_GETNEIGH, NLM_F_DUMP, sequence, info);
        break;
    }
    }
    writer.end();
    return request;
}

} // namespace Agent
