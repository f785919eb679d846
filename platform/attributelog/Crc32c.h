#pragma once

#include <cstdint>
#include <string_view>

namespace Orb {

/// The CRC-32C (Castagnoli) of the bytes; `previous` continues the CRC of what went before them.
std::uint32_t crc32c(std::string_view bytes, std::uint32_t previous = 0);

} // namespace Orb
