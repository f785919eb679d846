#include "agent/topics/VrfCursor.h"

#include <algorithm>
#include <functional>

#include "directnet/root/RootSm.h"

namespace Agent {

VrfCursor::VrfCursor(const AgentView& view, const std::optional<L3::VrfName>& vrf) : view_(view) {
    if (vrf) {
        vrfs_.push_back(*vrf);
        return;
    }
    for (const auto& container : view.root.containerSm()) {
        vrfs_.push_back(container->vrfName());
    }
    std::sort(vrfs_.begin(), vrfs_.end(), std::greater<>());
}

const VrfCursor::ContainerSm* VrfCursor::vrf() const {
    return vrfs_.empty() ? nullptr : view_.root.containerSm(vrfs_.back());
}

bool VrfCursor::advance() {
    if (!vrfs_.empty()) {
        vrfs_.pop_back();
    }
    return !vrfs_.empty();
}

} // namespace Agent
