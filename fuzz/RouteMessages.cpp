#include "agent/base/Utf8.h"
#include "agent/linux/RouteMessage.h"
#include "platform/orb/value/Assert.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

/// One netlink message of any content: whatever is read from it fits a document.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<std::uint8_t> bytes(std::max(size, sizeof(nlmsghdr)));
    std::copy_n(data, size, bytes.data());
    auto length = static_cast<std::uint32_t>(bytes.size());
    std::memcpy(bytes.data(), &length, sizeof length);
    const auto& header = *reinterpret_cast<const nlmsghdr*>(bytes.data());
    const auto message = Agent::Linux::parseRouteMessage(header);
    if (!message) {
        return 0;
    }
    if (const auto* link = std::get_if<Agent::Linux::LinkMessage>(&*message)) {
        ORB_ASSERT(Agent::isUtf8(link->name.name()), "a link's name fits a document");
    }
    return 0;
}
