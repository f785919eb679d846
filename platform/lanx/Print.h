#pragma once

#include <ostream>

#include "platform/orb/value/Text.h"

namespace Lanx {

/// Names, addresses and prefixes print as their plain word.
template <Orb::PlainText T>
std::ostream& operator<<(std::ostream& out, const T& value) {
    return out << Orb::plainText(value);
}

} // namespace Lanx
