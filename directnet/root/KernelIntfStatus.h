#pragma once

#include <utility>

#include "directnet/model/Units.h"
#include "platform/interface/DeviceIntfStatusDir.h"
#include "platform/orb/attribute/Declare.h"
#include "platform/vrf/VrfName.h"

namespace Routing::DirectNet {

/// Answers whether an interface is there as a running device in the kernel of its VRF's namespace.
class KernelIntfStatus : public Orb::Entity {
    ORB_ENTITY(KernelIntfStatus, "Routing::DirectNet::KernelIntfStatus")
    ORB_CONSTRUCTOR((L3::VrfName, vrfName),
                    (Orb::Ptr<const Interface::DeviceIntfStatusDir>, kernelIntfStatusDir))
    /// Every interface counts as present.
    ORB_ATTRIBUTE(260, bool, ignoreKernelInterfaceState)
    ORB_ATTRIBUTE(261, bool, initialized)

  public:
    explicit KernelIntfStatus(Arguments arguments);

    /// Reads "DIRECTNET_INTFENTRY_WITHOUT_KERNEL_INTF", which, set to anything, turns the check
    /// off.
    void handleInitialized();

    bool kernelIntfPresent(Lanx::IntfId intfId) const;
};

inline Orb::Ptr<KernelIntfStatus>
kernelIntfStatusFactory(const L3::VrfName& vrfName,
                        const Orb::Ptr<const Interface::DeviceIntfStatusDir>& dir) {
    return Orb::makePtr<KernelIntfStatus>(KernelIntfStatus::Arguments{vrfName, dir});
}

} // namespace Routing::DirectNet
