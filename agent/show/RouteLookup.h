#pragma once

#include <optional>
#include <string_view>

#include "agent/device/DeviceInputs.h"
#include "directnet/root/RootSm.h"
#include "platform/routing/Route.h"

namespace Agent {

/// Follows single routes to what they point at, each at a cost that does not grow with anything.
/// Stays valid while the tables change. The root and the inputs must outlive it.
class RouteLookup {
  public:
    using RootSm = Routing::DirectNet::RootSm;
    using Route = Routing::Rib::Route;

    /// A route, followed to what it points at. Nothing where a table lacks the next record.
    struct Target {
        std::optional<Lanx::IntfId> intfId;
        std::string_view via; // which of the interface's via sets; empty if it is none of them
        bool leaked;
        const L3::VrfName* sourceVrf; // of a leaked route; null if no VRF has the id
    };

    RouteLookup(const RootSm& root, const DeviceInputs& inputs) : root_(root), inputs_(inputs) {}

    Target target(const Route& route) const;

  private:
    std::string_view viaName(const Route& route, Lanx::IntfId intfId) const;

    const RootSm& root_;
    const DeviceInputs& inputs_;
};

} // namespace Agent
