#pragma once

#include <cstdint>
#include <vector>

#include "agent/device/DeviceInputs.h"
#include "agent/show/RouteLookup.h"
#include "directnet/root/RootSm.h"
#include "platform/routing/ProtoVrfStatus.h"
#include "platform/routing/Route.h"

namespace Agent {

/// The agent's state as it is shown: read out of the tables that the library has written, at the
/// moment of looking. A view is valid until anything changes.
/// Routes are looked at one VRF and family at a time.
class StateView {
  public:
    using ContainerSm = Routing::DirectNet::ContainerSm;
    using RootSm = Routing::DirectNet::RootSm;
    using Route = Routing::Rib::Route;

    struct Vrf {
        const ContainerSm* container;
        bool ipv4Ready;
        bool ipv6Ready;
        const Routing::Rib::ProtoVrfStatus* rib; // null while nobody waits for the VRF
        std::size_t backlog;
    };

    StateView(const RootSm& root, const DeviceInputs& inputs, double time);

    /// Seconds of the agent's clock.
    double time() const { return time_; }

    /// Every VRF that has a container, by name.
    std::vector<Vrf> vrfs() const;

    /// The VRF's routes of one family, by address, then length.
    std::vector<const Route*> routes(const Vrf& vrf, Lanx::AddressFamily af) const;
    RouteLookup::Target target(const Route& route) const { return lookup_.target(route); }

    std::size_t vias(Lanx::AddressFamily af) const { return viaConfig(af).size(); }
    std::size_t viaSets() const;

  private:
    const Routing::Rib::Ip::ViaConfig& viaConfig(Lanx::AddressFamily af) const;

    const RootSm& root_;
    const DeviceInputs& inputs_;
    double time_;
    RouteLookup lookup_;
};

} // namespace Agent
