#pragma once

#include <string>
#include <string_view>
#include <variant>

#include "platform/lanx/IpGenAddr.h"
#include "platform/lanx/IpGenPrefix.h"

namespace Agent {

/// What is to be explained: a prefix, an address, or the interface of that name.
using ExplainTarget = std::variant<Lanx::IpGenPrefix, Lanx::IpGenAddr, std::string>;

/// Every text that is neither a prefix nor an address is the name of an interface. Throws
/// DocumentError for one that is none, and for a prefix with host bits.
ExplainTarget readExplainTarget(std::string_view text);

} // namespace Agent
