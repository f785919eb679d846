#pragma once

#include <nlohmann/json_fwd.hpp>

#include "agent/patch/DevicePatch.h"

namespace Agent {

/// Reads a merge patch: null removes, an object is merged, anything else replaces. Throws
/// DocumentError for the first value that the schema does not allow.
DevicePatch readDevicePatch(const nlohmann::json& patch);

} // namespace Agent
