#include "platform/lanx/AddressBytes.h"

#include <algorithm>

namespace Lanx {

namespace {

/// The upper `count` (0 to 7) bits of a byte.
std::uint8_t leadingBits(unsigned count) { return static_cast<std::uint8_t>(0xff00u >> count); }

} // namespace

void clearHostBits(AddressBytes& bytes, unsigned len) {
    std::size_t index = len / 8;
    if (len % 8 != 0) {
        bytes[index] = bytes[index] & leadingBits(len % 8);
        ++index;
    }
    std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(index), bytes.end(), std::uint8_t{0});
}

bool sameNetworkBits(const AddressBytes& left, const AddressBytes& right, unsigned len) {
    const std::size_t whole = len / 8;
    return std::equal(left.begin(), left.begin() + static_cast<std::ptrdiff_t>(whole),
                      right.begin())
           && (len % 8 == 0 || ((left[whole] ^ right[whole]) & leadingBits(len % 8)) == 0);
}

} // namespace Lanx
