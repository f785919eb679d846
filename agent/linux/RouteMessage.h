#pragma once

#include "agent/linux/AddressMessage.h"
#include "agent/linux/LinkMessage.h"

#include <variant>

namespace Agent::Linux {

using RouteMessage = std::variant<LinkMessage, AddressMessage>;

} // namespace Agent::Linux
