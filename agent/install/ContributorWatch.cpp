#include "agent/install/ContributorWatch.h"

#include <utility>

namespace Agent {

using Routing::DirectNet::IntfIdAndPrefix;

ContributorWatch::VrfReactor::VrfReactor(ContributorWatch& owner, Orb::Ptr<const Backlog> backlog)
    : owner_(owner) {
    interestIs(Backlog::backlogAttribute);
    hasNotificationActiveIs(true);
    notifierIs(std::move(backlog));
}

void ContributorWatch::VrfReactor::onAttribute(Orb::AttributeId id, const void* key) {
    if (id == Backlog::backlogAttribute) {
        const auto& pair = Orb::keyAs<IntfIdAndPrefix>(key);
        if (!notifier()->backlog().contains(pair)) {
            owner_.listener_({notifier()->vrfId(), pair.genPrefix()});
        }
    }
}

ContributorWatch::Reactor::Reactor(ContributorWatch& owner, Orb::Ptr<const Backlogs> backlogs)
    : owner_(owner) {
    hasNotificationActiveIs(true);
    notifierIs(std::move(backlogs));
}

void ContributorWatch::Reactor::onAttribute(Orb::AttributeId id, const void* key) {
    if (id == Backlogs::intfBacklogAttribute) {
        owner_.handleVrf(Orb::keyAs<VrfId>(key));
    }
}

ContributorWatch::ContributorWatch(Orb::Ptr<const Backlogs> backlogs, Listener listener)
    : listener_(std::move(listener)), reactor_(Orb::makePtr<Reactor>(*this, std::move(backlogs))) {}

ContributorWatch::~ContributorWatch() {
    reactor_->notifierIs(nullptr);
    for (const auto& vrf : vrfs_) {
        vrf.second->notifierIs(nullptr);
    }
}

void ContributorWatch::handleVrf(VrfId id) {
    if (const auto known = vrfs_.extract(id)) {
        known.mapped()->notifierIs(nullptr);
    }
    if (const Backlog* backlog = reactor_->notifier()->intfBacklog(id)) {
        vrfs_[id] = Orb::makePtr<VrfReactor>(*this, Orb::Ptr<const Backlog>(backlog));
    }
}

} // namespace Agent
