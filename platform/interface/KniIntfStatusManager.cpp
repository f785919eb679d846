#include "platform/interface/KniIntfStatusManager.h"

#include <utility>

#include "platform/orb/attribute/DefineType.h"
#include "platform/orb/container/Keys.h"

namespace Interface {

ORB_DEFINE_TYPE(KniIntfStatusManager)

void KniIntfStatusManager::OrbKniStatus::onAttribute(Orb::AttributeId id, const void* key) {
    if (id == KernelNetInfo::Status::deviceAttribute) {
        owner()->handleDevice(Orb::keyAs<Lanx::IntfId>(key));
    }
}

KniIntfStatusManager::KniIntfStatusManager(Arguments arguments)
    : arguments_(std::move(arguments)), orbKniStatus_(this) {
    orbKniStatus_.notifierIs(kniStatus());
    handleDevices();
}

void KniIntfStatusManager::omitNonRunningKernelDevicesIs(bool omit) {
    if (std::exchange(omitNonRunning_, omit) != omit) {
        handleDevices();
    }
}

void KniIntfStatusManager::handleDevices() {
    Orb::forEachKey(kniStatus()->device(), [this](Lanx::IntfId intfId) { handleDevice(intfId); });
}

void KniIntfStatusManager::handleDevice(Lanx::IntfId intfId) {
    const KernelNetInfo::Device* device = kniStatus()->device().find(intfId);
    if (device == nullptr || (omitNonRunning_ && !device->running())) {
        deviceIntfStatusDir()->intfStatusAndDeviceNameDel(intfId);
    } else {
        deviceIntfStatusDir()->intfStatusAndDeviceNameIs(
            intfId, IntfStatusAndDeviceName(intfId, device->name()));
    }
}

} // namespace Interface
