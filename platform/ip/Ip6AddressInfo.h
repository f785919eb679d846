#pragma once

#include <cstdint>
#include <ostream>

namespace Ip6 {

/// What is known of an IPv6 address. An address whose info is the default is listed but not in use.
struct AddressInfo {
    /// Duplicate address detection is over and the address is in use.
    bool active = false;
    /// Seconds for which the address stays preferred; 0 is for ever.
    std::uint32_t preferredLifetime = 0;

    friend bool operator==(const AddressInfo&, const AddressInfo&) = default;
    friend std::ostream& operator<<(std::ostream& out, const AddressInfo& info) {
        return out << (info.active ? "active" : "inactive");
    }
};

} // namespace Ip6
