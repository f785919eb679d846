#include "agent/topics/StatusRows.h"

#include <algorithm>
#include <functional>
#include <numeric>

#include "directnet/backlog/RouteKinds.h"

namespace Agent {

using Routing::DirectNet::routeTypeName;
using Routing::Fib::RouteType;

namespace {

constexpr std::array<RouteType, RouteCounts::types> order{
    RouteType::connected, RouteType::receive, RouteType::attachedHost, RouteType::receiveBroadcast,
    RouteType::dropDirectedBroadcast};

} // namespace

std::string_view RouteCounts::name(std::size_t type) { return routeTypeName(order.at(type)); }

void RouteCounts::add(RouteType type) {
    const auto* const found = std::ranges::find(order, type);
    if (found != order.end()) {
        ++counts_.at(static_cast<std::size_t>(found - order.begin()));
    }
}

void RouteCounts::add(const RouteCounts& other) {
    std::ranges::transform(counts_, other.counts_, counts_.begin(), std::plus<>());
}

std::uint64_t RouteCounts::total() const {
    return std::accumulate(counts_.begin(), counts_.end(), std::uint64_t{0});
}

void ValueForm<RouteCounts>::write(JsonWriter& out, const RouteCounts& value) {
    out.beginObject();
    value.forEach([&](std::string_view name, std::uint64_t count) { out.member(name, count); });
    out.endObject();
}

std::string ValueForm<RouteCounts>::text(const RouteCounts& value) {
    std::string text = std::to_string(value.total());
    std::string_view separator = ": ";
    value.forEach([&](std::string_view name, std::uint64_t count) {
        if (count > 0) {
            text.append(separator).append(std::to_string(count)).append(" ").append(name);
            separator = ", ";
        }
    });
    return text;
}

RouteCounts ValueForm<RouteCounts>::read(const JsonValue& json) {
    RouteCounts counts;
    for (std::size_t i = 0; i < RouteCounts::types; ++i) {
        counts.counts_.at(i) =
            static_cast<std::uint64_t>(json.member(RouteCounts::name(i)).integer());
    }
    return counts;
}

} // namespace Agent
