#include "agent/base/Utf8.h"
#include "agent/linux/AddressMessage.h"
#include "agent/linux/LinkMessage.h"
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
    if (auto link = Agent::Linux::LinkMessage::parse(header)) {
        ORB_ASSERT(Agent::isUtf8(link->name), "a link's name fits a document");
    }
    if (auto address = Agent::Linux::AddressMessage::parse(header)) {
        ORB_ASSERT(address->own().subnet().length <= address->local.hostLength(),
                   "a prefix is no longer than its address");
        static_cast<void>(address->own().text());
    }
    return 0;
}
