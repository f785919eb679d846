#include "agent/base/Utf8.h"
#include "agent/install/InstallWire.h"
#include "agent/linux/RouteMessage.h"
#include "platform/orb/value/Assert.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

/// One netlink message of any content: whatever is read from it fits a document, and
/// can be asked for.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<std::uint8_t> bytes(std::max(size, sizeof(nlmsghdr)));
    std::copy_n(data, size, bytes.data());
    auto length = static_cast<std::uint32_t>(bytes.size());
    std::memcpy(bytes.data(), &length, sizeof length);
    const auto& header = *reinterpret_cast<const nlmsghdr*>(bytes.data());
    Agent::parseRefusalMessage(header);
    Agent::parseProxySettingMessage(header);
    if (const auto entry = Agent::parseEntryMessage(header)) {
        std::vector<std::byte> request;
        Agent::appendEntryRequest(request, entry->entry, entry->protocol, true, 1);
        const auto again =
            Agent::parseEntryMessage(*reinterpret_cast<const nlmsghdr*>(request.data()));
        ORB_ASSERT(again && again->entry == entry->entry, "a request names what was read");
    }
    const auto message = Agent::Linux::parseRouteMessage(header);
    if (!message) {
        return 0;
    }
    if (const auto* link = std::get_if<Agent::Linux::LinkMessage>(&*message)) {
        ORB_ASSERT(Agent::isUtf8(link->name.name()), "a link's name fits a document");
    }
    return 0;
}
