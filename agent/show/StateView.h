#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "agent/device/DeviceInputs.h"
#include "directnet/root/RootSm.h"
#include "platform/orb/HashMap.h"
#include "platform/routing/ProtoVrfStatus.h"
#include "platform/routing/Route.h"

namespace Agent {

/// The agent's state as it is shown: read out of the tables that the library has written, at the
/// moment of looking. A view is valid until anything changes.
///
/// It costs one walk over the interfaces when it is made; routes are looked at one VRF and family
/// at a time.
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

    /// A route, followed to what it points at. Nothing where a table lacks the next record.
    struct Target {
        std::optional<Lanx::IntfId> intfId;
        std::string_view via; // which of the interface's via sets; empty if it is none of them
        bool leaked;
        const L3::VrfName* sourceVrf; // of a leaked route; null if no VRF has the id
    };

    StateView(const RootSm& root, const DeviceInputs& inputs, double time);

    /// Seconds of the agent's clock, in whole microseconds.
    double time() const { return time_; }
    static double inMicroseconds(double seconds);

    /// Every VRF that has a container, by name.
    std::vector<Vrf> vrfs() const;

    /// The VRF's routes of one family, by address, then length.
    std::vector<const Route*> routes(const Vrf& vrf, Lanx::AddressFamily af) const;
    Target target(const Route& route) const;

    std::size_t vias(Lanx::AddressFamily af) const { return viaConfig(af).size(); }
    std::size_t viaSets() const;

  private:
    const Routing::Rib::Ip::ViaConfig& viaConfig(Lanx::AddressFamily af) const;
    void indexViaSets(const Routing::DirectNet::IntfViaSetKeyStatus& status);

    const RootSm& root_;
    const DeviceInputs& inputs_;
    double time_;
    Orb::HashMap<Routing::Rib::ViaSetKey, std::string_view> viaNames_;
};

} // namespace Agent
