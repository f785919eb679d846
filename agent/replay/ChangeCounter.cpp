#include "agent/replay/ChangeCounter.h"

#include <utility>

namespace Agent {

using Routing::Rib::RouteConfig;
using Routing::Rib::Ip::ViaConfig;
using Routing::Rib::Memtab::ViaSetCollection;

ChangeCounter::ChangeCounter(const Routing::DirectNet::RootSm& root,
                             const Routing::Rib::ViaSetConfig& viaSets) {
    const auto watch = [this](const auto& table, Orb::AttributeId collection) {
        reactors_.push_back(Orb::makePtr<TableReactor>(*this, table, collection));
    };
    watch(root.ipv4AllVrfRouteConfig(), RouteConfig::routeAttribute);
    watch(root.ipv6AllVrfRouteConfig(), RouteConfig::routeAttribute);
    watch(root.ipv4AllVrfViaConfig(), ViaConfig::viaAttribute);
    watch(root.ipv6AllVrfViaConfig(), ViaConfig::viaAttribute);
    watch(viaSets.viaSetCollection(), ViaSetCollection::viaSetAttribute);
}

void ChangeCounter::callAt(std::uint64_t nth, std::function<void()> act) {
    left_ = nth;
    act_ = std::move(act);
}

void ChangeCounter::handleChange() {
    if (act_ && --left_ == 0) {
        // Out of the way first: what it does is a change of the tables in its turn.
        const std::function<void()> act = std::exchange(act_, nullptr);
        act();
    }
}

ChangeCounter::TableReactor::TableReactor(ChangeCounter& owner, Orb::Ptr<const Orb::Entity> table,
                                          Orb::AttributeId collection)
    : owner_(owner), collection_(collection) {
    hasNotificationActiveIs(true);
    interestIs(collection);
    notifierIs(std::move(table));
}

void ChangeCounter::TableReactor::onAttribute(Orb::AttributeId id, const void*) {
    if (id == collection_) {
        owner_.handleChange();
    }
}

} // namespace Agent
