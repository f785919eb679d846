#pragma once

#include <nlohmann/json.hpp>

namespace Agent {

/// The merge patch that makes `to` of `from`; an empty object if they are equal. Both are objects
/// without null in them.
nlohmann::json mergeDiff(const nlohmann::json& from, const nlohmann::json& to);

} // namespace Agent
