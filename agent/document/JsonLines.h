#pragma once

#include <cstddef>
#include <string_view>

namespace Agent {

/// The line, from 1, on which the byte at `offset` stands.
std::size_t lineOf(std::string_view text, std::size_t offset);

/// The line, from 1, on which the value that a JSON pointer names begins: for a member of an object
/// that of its key. If the value is not there, the line of the nearest value around it that is.
/// Where the text is no valid JSON the line is a guess.
std::size_t lineOf(std::string_view text, std::string_view pointer);

} // namespace Agent
