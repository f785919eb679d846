#include "agent/device/KernelInputs.h"

#include <string>

#include "directnet/root/RootInputs.h"

namespace Agent {

using KernelNetInfo::Device;
using KernelNetInfo::Status;
using Routing::DirectNet::MountPaths::kernelDevices;

KernelInputs::KernelInputs(const Orb::Ptr<Vaultdb::EntityManager>& entityManager)
    : mount_(entityManager) {}

void KernelInputs::apply(const Change<KernelPatch>& patch) {
    if (patch.isRemoval()) {
        while (!mounted_.empty()) {
            clear(Lanx::NamespaceName(*mounted_.begin()));
        }
    }
    if (const KernelPatch* namespaces = patch.value()) {
        for (const auto& [netns, change] : *namespaces) {
            if (change.isRemoval()) {
                clear(netns);
            } else if (change.value() != nullptr) {
                applyTo(netns, *change.value());
            }
        }
    }
}

void KernelInputs::applyTo(const Lanx::NamespaceName& netns, const NamespacePatch& patch) {
    const Orb::Ptr<Status> status = table(netns);
    for (const auto& [intfId, change] : patch) {
        if (change.isRemoval()) {
            status->deviceDel(intfId);
        } else if (const KernelDevicePatch* device = change.value()) {
            const std::string ownName(intfId.name());
            const Device* present = status->device().find(intfId);
            const std::string name =
                device->device.after(present == nullptr ? ownName : present->name(), ownName);
            const bool running =
                device->running.after(present == nullptr || present->running(), true);
            status->deviceIs(intfId, Device(name, running));
        }
    }
}

Orb::Ptr<Status> KernelInputs::table(const Lanx::NamespaceName& netns) {
    const Orb::String path = kernelDevices(netns);
    if (mounted_.insert(netns).second) {
        mount_.doMount(path, Status::orbTypeName,
                       OrbMemtab::MountInfo(OrbMemtab::MountInfo::Type::write));
    }
    return mount_.getEntity<Status>(path);
}

void KernelInputs::clear(const Lanx::NamespaceName& netns) {
    const Orb::String path = kernelDevices(netns);
    if (mounted_.erase(netns) != 0) {
        mount_.getEntity<Status>(path)->deviceDelAll();
        mount_.doUnmount(path);
        mount_.cleanup(path);
    }
}

} // namespace Agent
