#pragma once

#include <optional>
#include <string>

#include "platform/routing/RouteKey.h"

namespace Agent {

/// Tells how it stands with routes in the kernel, where the agent installs some.
class KernelWords {
  public:
    virtual ~KernelWords() = default;

    /// "installed", "waiting", "failed: ..."; nothing of a route that the agent does not install.
    virtual std::optional<std::string> words(const Routing::Rib::RouteKey& route) const = 0;
};

} // namespace Agent
