#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/lanx/IntfId.h"
#include "platform/lanx/NamespaceName.h"
#include "platform/vrf/VrfName.h"

namespace Agent {

/// Where the kernel has a VRF: in a network namespace, as the namespace itself or as a device.
struct VrfPlace {
    Lanx::NamespaceName netns;
    Lanx::IntfId device{};   ///< the empty one for the namespace itself
    std::uint32_t table = 0; ///< the device's table; 0 for the namespace's tables main and local

    bool isDevice() const { return table != 0; }
    friend bool operator==(const VrfPlace&, const VrfPlace&) = default;
};

/// Where the kernels of the followed namespaces have VRFs, as last learned.
class KernelPlaces {
  public:
    /// Is told of changes after the agent's state has taken them.
    class Observer {
      public:
        virtual ~Observer() = default;

        /// A namespace has been learned for the first time, or anew after it was gone.
        virtual void onNamespace(const Lanx::NamespaceName& netns) = 0;
        /// VRFs of a namespace have come up or gone.
        virtual void onVrfs(const Lanx::NamespaceName& netns) = 0;
        /// A namespace can no longer be followed.
        virtual void onNamespaceGone(const Lanx::NamespaceName& netns) = 0;
    };

    virtual ~KernelPlaces() = default;

    /// Where a VRF is; none while it is not up.
    virtual std::optional<VrfPlace> place(const L3::VrfName& vrf) const = 0;
    /// The VRFs that are up in a namespace.
    virtual std::vector<L3::VrfName> vrfsOf(const Lanx::NamespaceName& netns) const = 0;
};

} // namespace Agent
