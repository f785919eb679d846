#include "platform/interface/NetNsIntfStatusManagerRoot.h"

#include <algorithm>

#include "platform/orb/attribute/DefineType.h"

namespace Interface {

ORB_DEFINE_TYPE(NetNsIntfStatusManagerRoot)

Orb::Ptr<KniIntfStatusManager> NetNsIntfStatusManagerRoot::intfStatusManagerIs(
    const Orb::Ptr<DeviceIntfStatusDir>& dir,
    const Orb::Ptr<const KernelNetInfo::Status>& kniStatus, const Lanx::NamespaceName& netNs) {
    const KniIntfStatusManager::Arguments arguments{dir, kniStatus, netNs};
    for (const Orb::Ptr<KniIntfStatusManager>& manager : managers_) {
        if (manager->arguments() == arguments) {
            return manager;
        }
    }
    return managers_.emplace_back(Orb::makePtr<KniIntfStatusManager>(arguments));
}

void NetNsIntfStatusManagerRoot::intfStatusManagerDel(const Lanx::NamespaceName& netNs,
                                                      const Orb::Ptr<DeviceIntfStatusDir>& dir) {
    const auto found = std::find_if(managers_.begin(), managers_.end(), [&](const auto& manager) {
        return manager->netNs() == netNs && manager->deviceIntfStatusDir() == dir;
    });
    if (found != managers_.end()) {
        const Orb::Ptr<KniIntfStatusManager> manager = *found;
        managers_.erase(found);
        Orb::releaseChild(manager);
    }
}

} // namespace Interface
