#pragma once

#include <cstddef>
#include <string>

namespace Agent {

/// Bytes that a configuration may have.
inline constexpr std::size_t maxConfigSize = std::size_t{64} << 20U;

/// Reads a whole configuration: a regular file, never anything that a reader may have to wait for,
/// or standard input for "-". Throws BadInputError, as "FILE: ...".
std::string readConfigText(const std::string& path);

} // namespace Agent
