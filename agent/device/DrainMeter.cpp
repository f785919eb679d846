#include "agent/device/DrainMeter.h"

#include <algorithm>

namespace Agent {

using Routing::DirectNet::ContainerSm;

DrainMeter::DrainMeter(const RootSm& root, const Orb::Clock& clock)
    : root_(root), clock_(clock), rootReactor_(Orb::makePtr<Reactor<RootSm>>(
                                      root, RootSm::containerSmAttribute, [this](const void* key) {
                                          follow(Orb::keyAs<L3::VrfName>(key));
                                      })) {
    for (const auto& container : root.containerSm()) {
        follow(container->vrfName());
    }
}

DrainMeter::~DrainMeter() {
    rootReactor_->notifierIs(nullptr);
    for (auto& entry : followed_) {
        leave(entry.second);
    }
}

void DrainMeter::follow(const L3::VrfName& vrf) {
    if (const auto present = followed_.find(vrf); present != followed_.end()) {
        leave(present->second);
        followed_.erase(present);
    }
    const ContainerSm* container = root_.containerSm(vrf);
    if (container == nullptr) {
        return;
    }
    const IntfBacklogSm& machine = *container->intfBacklogSm();
    const auto pausesAt = [this, &machine](const void*) {
        if (machine.backlogBookmark().intfId() != Lanx::IntfId()) {
            ended();
        }
    };
    followed_[vrf] = {Orb::makePtr<Reactor<IntfBacklogSm>>(
                          machine, IntfBacklogSm::handleBacklogCallCountAttribute,
                          [this](const void*) { began(); }),
                      Orb::makePtr<Reactor<IntfBacklogSm>>(
                          machine, IntfBacklogSm::backlogBookmarkAttribute, pausesAt),
                      Orb::makePtr<Reactor<IntfBacklog>>(*container->intfBacklog(),
                                                         IntfBacklog::backlogEmptyAttribute,
                                                         [this](const void*) { ended(); })};
}

void DrainMeter::leave(Followed& followed) {
    followed.begin->notifierIs(nullptr);
    followed.pause->notifierIs(nullptr);
    followed.end->notifierIs(nullptr);
}

void DrainMeter::began() {
    ++drains_;
    began_ = clock_.now();
}

void DrainMeter::ended() {
    if (began_) {
        longest_ = std::max(longest_, clock_.now() - *began_);
        began_.reset();
    }
}

} // namespace Agent
