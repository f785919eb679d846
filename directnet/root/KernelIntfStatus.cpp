#include "directnet/root/KernelIntfStatus.h"

#include <cstdlib>

#include "directnet/model/Trace.h"
#include "directnet/root/TraceUnit.h"
#include "platform/orb/attribute/DefineType.h"

namespace Routing::DirectNet {

ORB_DEFINE_TYPE(KernelIntfStatus)
ORB_REGISTER(KernelIntfStatus, KernelIntfStatus, unitDirectNet, 9)

KernelIntfStatus::KernelIntfStatus(Arguments arguments) : arguments_(std::move(arguments)) {
    handleInitialized();
}

void KernelIntfStatus::handleInitialized() {
    if (initialized()) {
        DIRECTNET_TRACE(8, vrfName(), " already initialized");
        return;
    }
    if (std::getenv("DIRECTNET_INTFENTRY_WITHOUT_KERNEL_INTF") != nullptr) {
        ignoreKernelInterfaceStateIs(true);
    }
    initializedIs(true);
}

bool KernelIntfStatus::kernelIntfPresent(Lanx::IntfId intfId) const {
    const auto* device = kernelIntfStatusDir()->intfStatusAndDeviceName().find(intfId);
    if (device != nullptr && *device != Interface::IntfStatusAndDeviceName()) {
        return true;
    }
    if (ignoreKernelInterfaceState()) {
        return true;
    }
    DIRECTNET_TRACE(9, "Kernel device not present yet: ", intfId);
    return false;
}

} // namespace Routing::DirectNet
