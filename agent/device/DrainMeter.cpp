#include "agent/device/DrainMeter.h"

#include <algorithm>

namespace Agent {

using Routing::DirectNet::ContainerSm;

DrainMeter::RootReactor::RootReactor(DrainMeter& owner, const RootSm& root) : owner_(owner) {
    hasNotificationActiveIs(true);
    interestIs(RootSm::containerSmAttribute);
    notifierIs(Orb::Ptr<const RootSm>(&root));
}

void DrainMeter::RootReactor::onAttribute(Orb::AttributeId, const void* key) {
    owner_.follow(Orb::keyAs<L3::VrfName>(key));
}

DrainMeter::MachineReactor::MachineReactor(DrainMeter& owner, const IntfBacklogSm& machine)
    : owner_(owner) {
    hasNotificationActiveIs(true);
    notifierIs(Orb::Ptr<const IntfBacklogSm>(&machine));
}

void DrainMeter::MachineReactor::onAttribute(Orb::AttributeId id, const void*) {
    if (id == IntfBacklogSm::handleBacklogCallCountAttribute) {
        owner_.began();
    } else if (id == IntfBacklogSm::backlogBookmarkAttribute
               && notifier()->backlogBookmark().intfId() != Lanx::IntfId()) {
        owner_.ended();
    }
}

DrainMeter::BacklogReactor::BacklogReactor(DrainMeter& owner, const IntfBacklog& backlog)
    : owner_(owner) {
    hasNotificationActiveIs(true);
    interestIs(IntfBacklog::backlogEmptyAttribute);
    notifierIs(Orb::Ptr<const IntfBacklog>(&backlog));
}

void DrainMeter::BacklogReactor::onAttribute(Orb::AttributeId, const void*) { owner_.ended(); }

DrainMeter::DrainMeter(const RootSm& root, const Orb::Clock& clock)
    : root_(root), clock_(clock), rootReactor_(Orb::makePtr<RootReactor>(*this, root)) {
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
    if (const ContainerSm* container = root_.containerSm(vrf)) {
        followed_[vrf] = {Orb::makePtr<MachineReactor>(*this, *container->intfBacklogSm()),
                          Orb::makePtr<BacklogReactor>(*this, *container->intfBacklog())};
    }
}

void DrainMeter::leave(Followed& followed) {
    followed.machine->notifierIs(nullptr);
    followed.backlog->notifierIs(nullptr);
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
