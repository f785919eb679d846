#pragma once

#include "platform/routing/PrefixRecord.h"
#include "platform/routing/Route.h"

namespace Routing::Rib {

/// How a route looks in memory that other processes read. Beside its users, since every route that
/// is written or compared passes here.
struct RouteForm {
    using Record = Tables::RouteRecord;
    using Value = Route;
    using Key = RouteKey;

    static Record record(const Route& route) {
        Record record{};
        record.vrfId = route.key().vrfId().value();
        record.viaSet = route.viaSetKey().value();
        storePrefix(record, route.key().prefix());
        record.sourceVrfId = route.srcVrfId().value();
        record.metric = route.metricPref().metric();
        record.preference = route.metricPref().preference();
        record.type = static_cast<std::uint8_t>(route.routeType());
        return record;
    }

    static Route value(const Record& record) {
        Route route(key(record), ViaSetKey(record.viaSet), Fib::RouteType{record.type},
                    MetricPref(record.metric, record.preference));
        route.srcVrfIdIs(Vrf::VrfIdMap::VrfId(record.sourceVrfId));
        return route;
    }

    static RouteKey key(const Record& record) {
        return {Vrf::VrfIdMap::VrfId(record.vrfId), prefixOf(record)};
    }
};

} // namespace Routing::Rib
