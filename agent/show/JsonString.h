#pragma once

#include <string>
#include <string_view>

namespace Agent {

/// Appends `text` as a JSON string. What is no UTF-8 in it is replaced.
void appendJsonString(std::string& out, std::string_view text);

} // namespace Agent
