#include "platform/attributelog/Crc32c.h"

#include <array>

namespace Orb {

namespace {

constexpr std::uint32_t reversedPolynomial = 0x82f63b78;

constexpr std::array<std::uint32_t, 256> makeTable() {
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t byte = 0; byte < table.size(); ++byte) {
        std::uint32_t remainder = byte;
        for (int bit = 0; bit < 8; ++bit) {
            remainder = remainder >> 1 ^ ((remainder & 1) != 0 ? reversedPolynomial : 0);
        }
        table[byte] = remainder;
    }
    return table;
}

constexpr std::array<std::uint32_t, 256> table = makeTable();

} // namespace

std::uint32_t crc32c(std::string_view bytes, std::uint32_t previous) {
    std::uint32_t crc = ~previous;
    for (const char c : bytes) {
        crc = crc >> 8 ^ table[(crc ^ static_cast<unsigned char>(c)) & 0xff];
    }
    return ~crc;
}

} // namespace Orb
