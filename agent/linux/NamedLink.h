#pragma once

#include <string_view>
#include <vector>

#include "platform/lanx/IpGenAddrWithMask.h"

namespace Agent::Linux {

/// The link that has a name, and what it has beside what is published of it.
struct NamedLink {
    struct Address {
        Lanx::IpGenAddrWithMask address;
        bool isSecondary = false;
        std::string_view obstacle; ///< see obstacleTo(); empty if the address itself may be used
    };

    bool isUp = false;
    bool isRunning = false;
    int vrfDevice = 0; ///< index of the VRF device that its addresses belong to; 0 for none
    std::vector<Address> unpublished; ///< by address
};

} // namespace Agent::Linux
