#pragma once

#include "platform/orb/value/BoundedString.h"

namespace Lanx {

/// The name of a network namespace, at most 150 bytes. The empty name is none.
class NamespaceName : public Orb::BoundedString<NamespaceName, 150> {
  public:
    static constexpr const char* rangeError = "NamespaceName::bytes > 150 not allowed";

    using BoundedString::BoundedString;

    /// The namespace that the system starts with.
    static NamespaceName defaultNamespace() { return "default"; }
};

} // namespace Lanx
