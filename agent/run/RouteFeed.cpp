#include "agent/run/RouteFeed.h"

#include <utility>

namespace Agent {

RouteFeed::TableReactor::TableReactor(RouteFeed& owner, Orb::Ptr<const RouteConfig> routes)
    : owner_(owner) {
    hasNotificationActiveIs(true);
    notifierIs(std::move(routes));
}

void RouteFeed::TableReactor::onAttribute(Orb::AttributeId id, const void* key) {
    if (id == RouteConfig::routeAttribute) {
        owner_.handle(*notifier(), Orb::keyAs<RouteKey>(key));
    }
}

RouteFeed::RouteFeed(const Routing::DirectNet::RootSm& root, const DeviceInputs& inputs,
                     Listener listener)
    : inputs_(inputs), listener_(std::move(listener)),
      ipv4_(Orb::makePtr<TableReactor>(*this, root.ipv4AllVrfRouteConfig())),
      ipv6_(Orb::makePtr<TableReactor>(*this, root.ipv6AllVrfRouteConfig())) {}

RouteFeed::~RouteFeed() {
    ipv4_->notifierIs(nullptr);
    ipv6_->notifierIs(nullptr);
}

void RouteFeed::handle(const RouteConfig& routes, const RouteKey& key) {
    const Routing::Rib::Route route = routes.route(key);
    if (!route) {
        if (known_.erase(key)) {
            listener_({ChangeKind::goes, vrfNames_[key.vrfId().value()], key, route});
        }
        return;
    }
    const bool isNew = known_.tryInsert(key).second;
    listener_({isNew ? ChangeKind::comes : ChangeKind::changes, vrfName(key.vrfId()), key, route});
}

const L3::VrfName& RouteFeed::vrfName(VrfId id) {
    L3::VrfName& name = vrfNames_[id.value()];
    if (const L3::VrfName* present = inputs_.vrfs().name(id)) {
        name = *present;
    }
    return name;
}

} // namespace Agent
