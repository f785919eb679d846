#include "agent/device/KernelInputs.h"

#include <optional>
#include <string>

#include "directnet/root/RootInputs.h"

namespace Agent {

using KernelNetInfo::Device;
using KernelNetInfo::Status;
using Routing::DirectNet::MountPaths::kernelDevices;

KernelInputs::KernelInputs(const Orb::Ptr<Vaultdb::EntityManager>& entityManager)
    : mount_(entityManager) {}

void KernelInputs::apply(const Edit<KernelPatch>& patch) {
    if (patch.isRemoval()) {
        while (!mounted_.empty()) {
            clear(Lanx::NamespaceName(*mounted_.begin()));
        }
    }
    if (const KernelPatch* namespaces = patch.value()) {
        for (const auto& [netns, edit] : *namespaces) {
            if (edit.isRemoval()) {
                clear(netns);
            } else if (edit.value() != nullptr) {
                applyTo(netns, *edit.value());
            }
        }
    }
}

void KernelInputs::applyTo(const Lanx::NamespaceName& netns, const NamespacePatch& patch) {
    const Orb::Ptr<Status> status = table(netns);
    for (const auto& [intfId, edit] : patch) {
        if (edit.isRemoval()) {
            status->deviceDel(intfId);
        } else if (const KernelDevicePatch* device = edit.value()) {
            std::optional<std::string> name;
            std::optional<bool> running;
            if (const Device* present = status->device().find(intfId)) {
                name = present->name();
                running = present->running();
            }
            const std::string ownName(intfId.name());
            status->deviceIs(intfId,
                             Device(after<&KernelDevicePatch::device>(*device, name, ownName),
                                    after<&KernelDevicePatch::running>(*device, running)));
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
