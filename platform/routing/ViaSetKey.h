#pragma once

#include <cstdint>

#include "platform/orb/value/StrongNumber.h"

namespace Routing::Rib {

/// The id of a via set. The default, 0, names none.
class ViaSetKey : public Orb::StrongNumber<ViaSetKey, std::uint64_t> {
  public:
    using StrongNumber::StrongNumber;
};

} // namespace Routing::Rib
