#pragma once

#include <cstddef>
#include <cstdint>
#include <linux/netlink.h>
#include <optional>
#include <string>
#include <vector>

#include "agent/install/KernelEntry.h"

namespace Agent {

// Routes and proxy neighbours in the kernel's messages.

/// What the kernel says of an entry: that it is there, or that it is gone.
struct EntryMessage {
    KernelEntry entry;
    std::uint8_t protocol = 0;
    bool removed = false;
};

/// Why the kernel refused a request.
struct RefusalMessage {
    std::uint32_t sequence = 0;
    int code = 0;      ///< errno; 0 means that it did not refuse
    std::string words; ///< the kernel's own, and those of the code
};

/// Whether a link answers for proxy neighbours, in parts: what is not set was not said.
struct ProxySettingMessage {
    static constexpr int allLinks = -1;

    int link = 0; ///< the link's index, or allLinks
    std::optional<bool> proxyNdp{};
    std::optional<bool> forwarding{};
};

// Each reads a message that lies whole in its buffer; nothing if it is about something else, or is
// malformed. Routes of the cache are something else, and so are neighbours that are no proxies.
std::optional<EntryMessage> parseEntryMessage(const nlmsghdr& header);
/// The end of a listing is one that may have no code.
std::optional<RefusalMessage> parseRefusalMessage(const nlmsghdr& header);
std::optional<ProxySettingMessage> parseProxySettingMessage(const nlmsghdr& header);

/// Appends a request that adds the entry, if nothing is in its place yet, or takes it away.
void appendEntryRequest(std::vector<std::byte>& out, const KernelEntry& entry,
                        std::uint8_t protocol, bool add, std::uint32_t sequence);

/// What can be listed.
enum class Listing : std::uint8_t { links, proxySettings, ipv4Routes, ipv6Routes, proxies };

/// A request for a listing; of routes those of the protocol, if the kernel checks requests
/// strictly.
std::vector<std::byte> listingRequest(Listing listing, std::uint8_t protocol,
                                      std::uint32_t sequence);

} // namespace Agent
