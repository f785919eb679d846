#pragma once

#include "platform/orb/value/BoundedString.h"

namespace L3 {

/// The name of a VRF, at most maxLength bytes. The empty name is none.
class VrfName : public Orb::BoundedString<VrfName, 100> {
  public:
    static constexpr const char* rangeError = "VrfName::bytes > VrfName::maxLength not allowed";

    using BoundedString::BoundedString;

    /// The VRF that every device has.
    static VrfName defaultVrf() { return "default"; }
};

} // namespace L3
