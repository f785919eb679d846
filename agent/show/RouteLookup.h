#pragma once

#include "agent/show/StateView.h"

namespace Agent {

/// Follows single routes to what they point at, each at a cost that does not grow with anything.
/// Stays valid while the tables change. The root and the inputs must outlive it.
class RouteLookup {
  public:
    using RootSm = Routing::DirectNet::RootSm;
    using Route = Routing::Rib::Route;
    using Target = StateView::Target;

    RouteLookup(const RootSm& root, const DeviceInputs& inputs) : root_(root), inputs_(inputs) {}

    Target target(const Route& route) const;

  private:
    std::string_view viaName(const Route& route, Lanx::IntfId intfId) const;

    const RootSm& root_;
    const DeviceInputs& inputs_;
};

} // namespace Agent
