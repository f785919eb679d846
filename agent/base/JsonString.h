#pragma once

#include <string>
#include <string_view>

namespace Agent {

/// Appends `text` as a JSON string. What is no UTF-8 in it is replaced.
void appendJsonString(std::string& out, std::string_view text);
std::string jsonString(std::string_view text);

/// A time of the agent's clock as a JSON number: in seconds, to the microsecond.
std::string jsonSeconds(double seconds);

inline const char* jsonBoolean(bool value) { return value ? "true" : "false"; }

} // namespace Agent
