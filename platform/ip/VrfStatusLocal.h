#pragma once

#include <cstdint>
#include <utility>

#include "platform/lanx/NamespaceName.h"
#include "platform/orb/attribute/Declare.h"
#include "platform/vrf/VrfName.h"

namespace Ip {

/// How far the device has come with a VRF. Only an active VRF has routes.
enum class VrfState : std::uint8_t { initializing = 0, active = 1, deleting = 2 };

std::ostream& operator<<(std::ostream& out, VrfState state);

/// A VRF as it is set up on this device.
class VrfStatusLocal : public Orb::Entity {
    ORB_ENTITY(VrfStatusLocal, "Ip::VrfStatusLocal")
    ORB_CONSTRUCTOR((L3::VrfName, vrfName))
    ORB_KEY(L3::VrfName, vrfName)
    ORB_ATTRIBUTE(259, VrfState, state)
    /// The network namespace in which the VRF's interfaces have their kernel devices.
    ORB_ATTRIBUTE(260, Lanx::NamespaceName, netNs)

  public:
    explicit VrfStatusLocal(Arguments arguments) : arguments_(std::move(arguments)) {}
};

} // namespace Ip
