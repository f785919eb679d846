#pragma once

#include "platform/routing/MetricPref.h"
#include "platform/routing/RouteKey.h"
#include "platform/routing/RouteType.h"
#include "platform/routing/ViaSetKey.h"
#include "platform/vrf/VrfId.h"

namespace Routing::Rib {

/// One configured route. The default is no route.
class Route {
  public:
    Route() = default;
    Route(RouteKey key, ViaSetKey viaSetKey, Fib::RouteType routeType, MetricPref metricPref = {})
        : key_(key), viaSetKey_(viaSetKey), metricPref_(metricPref), routeType_(routeType) {}

    const RouteKey& key() const { return key_; }
    ViaSetKey viaSetKey() const { return viaSetKey_; }
    Fib::RouteType routeType() const { return routeType_; }
    MetricPref metricPref() const { return metricPref_; }

    /// The VRF that the route is leaked from; the invalid id on a local route.
    Vrf::VrfIdMap::VrfId srcVrfId() const { return srcVrfId_; }
    void srcVrfIdIs(Vrf::VrfIdMap::VrfId vrfId) { srcVrfId_ = vrfId; }

    bool operator!() const { return *this == Route(); }
    friend bool operator==(const Route&, const Route&) = default;

  private:
    RouteKey key_;
    ViaSetKey viaSetKey_;
    MetricPref metricPref_;
    Vrf::VrfIdMap::VrfId srcVrfId_;
    Fib::RouteType routeType_{};
};

} // namespace Routing::Rib
