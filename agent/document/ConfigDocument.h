#pragma once

#include <string_view>

#include "agent/patch/DevicePatch.h"

namespace Agent {

/// Reads the document that adds to what a live agent learns from the kernel: a device document that
/// may hold virtual addresses, leaks, what the routing information base waits for, ids of VRFs, and
/// whether this is a graceful restart. What is null in it is not there. Throws DocumentError.
DevicePatch readConfigDocument(std::string_view text);

} // namespace Agent
