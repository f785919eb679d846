#pragma once

#include <cstddef>
#include <nlohmann/json_fwd.hpp>
#include <string_view>

namespace Agent {

/// Objects and arrays within each other; no document of the agent comes near.
constexpr std::size_t maxJsonDepth = 64;

/// Parses one JSON text. Stricter than JSON asks for: a key given twice in one object and nesting
/// deeper than maxJsonDepth are refused. Throws DocumentError.
nlohmann::json parseJson(std::string_view text);

} // namespace Agent
