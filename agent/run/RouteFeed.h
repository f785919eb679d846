#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <unordered_map>

#include "agent/device/DeviceInputs.h"
#include "agent/topics/ChangeKind.h"
#include "directnet/root/RootSm.h"
#include "platform/orb/container/HashMap2018.h"
#include "platform/routing/RouteConfig.h"

namespace Agent {

/// Calls a listener for each route that is added, changed or removed, from inside the notification.
/// Keeps the keys of all routes. The listener must not change anything that the library works with.
/// The root and the inputs must outlive the feed.
class RouteFeed {
  public:
    struct Event {
        ChangeKind kind;
        const L3::VrfName& vrf;
        const Routing::Rib::RouteKey& key;
        const Routing::Rib::Route& route; // the default one when it goes
    };
    using Listener = std::function<void(const Event& event)>;

    RouteFeed(const Routing::DirectNet::RootSm& root, const DeviceInputs& inputs,
              Listener listener);
    RouteFeed(const RouteFeed&) = delete;
    RouteFeed& operator=(const RouteFeed&) = delete;
    ~RouteFeed();

    /// How many routes there are.
    std::size_t size() const { return known_.size(); }

  private:
    using RouteConfig = Routing::Rib::RouteConfig;
    using RouteKey = Routing::Rib::RouteKey;
    using VrfId = Vrf::VrfIdMap::VrfId;

    class TableReactor : public RouteConfig::NotifieeConst {
      public:
        TableReactor(RouteFeed& owner, Orb::Ptr<const RouteConfig> routes);
        void onAttribute(Orb::AttributeId id, const void* key) override;

      private:
        RouteFeed& owner_;
    };
    struct Self {
        const RouteKey& operator()(const RouteKey& key) const { return key; }
    };

    void handle(const RouteConfig& routes, const RouteKey& key);
    const L3::VrfName& vrfName(VrfId id);

    const DeviceInputs& inputs_;
    Listener listener_;
    Orb::HashMap2018<RouteKey, Self> known_;
    /// By id, the VRF that had it last: a VRF's id is gone before its routes are.
    std::unordered_map<VrfId::Number, L3::VrfName> vrfNames_;
    Orb::Ptr<TableReactor> ipv4_;
    Orb::Ptr<TableReactor> ipv6_;
};

} // namespace Agent
