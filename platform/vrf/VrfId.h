#pragma once

#include <cstdint>

#include "platform/orb/value/StrongNumber.h"

namespace Vrf::VrfIdMap {

/// The number of a VRF. The default is the invalid id; as the source VRF of a route it means that
/// the route is local, not leaked.
class VrfId : public Orb::StrongNumber<VrfId, std::uint32_t, 0xFFFFFF> {
  public:
    using StrongNumber::StrongNumber;

    static constexpr VrfId invalid() { return VrfId(); }
};

} // namespace Vrf::VrfIdMap
