#include "agent/run/ReadyVrfs.h"

namespace Agent {

bool ReadyVrfs::isReady(const RootSm& root, const L3::VrfName& vrf) {
    const auto* container = root.containerSm(vrf);
    return container != nullptr && container->vrfReadyStatus()->v4DirectNetsReady()
           && container->vrfReadyStatus()->v6DirectNetsReady();
}

bool ReadyVrfs::check() {
    if (areReady_) {
        return true;
    }
    if (!isNamed_ && !isLearned_ && device_.isLearned()) {
        waitedFor_.assign(device_.vrfs().begin(), device_.vrfs().end());
        isLearned_ = true;
    }
    if (isLearned_) {
        // Nobody asked for those that have gone since.
        std::erase_if(waitedFor_,
                      [&](const L3::VrfName& vrf) { return !device_.vrfs().contains(vrf); });
    }
    areReady_ = (isNamed_ || isLearned_) && missing().empty();
    return areReady_;
}

std::vector<L3::VrfName> ReadyVrfs::missing() const {
    if (areReady_) {
        return {};
    }
    if (!isNamed_ && !isLearned_) {
        return {L3::VrfName::defaultVrf()};
    }
    std::vector<L3::VrfName> missing = waitedFor_;
    std::erase_if(missing, [&](const L3::VrfName& vrf) { return isReady(root_, vrf); });
    return missing;
}

} // namespace Agent
