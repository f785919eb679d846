#include "tables/api/Convert.h"

#include <cstring>

namespace Tables {

static_assert(DIRECTNET_IPV4 == ipv4 && DIRECTNET_IPV6 == ipv6 && DIRECTNET_NO_VRF == noVrf);
static_assert(DIRECTNET_INTERFACE_SIZE == ViaRecord::maxName + 1
              && DIRECTNET_VRF_NAME_SIZE == VrfRecord::maxName + 1);
static_assert(static_cast<RecordKind>(DIRECTNET_ROUTE) == RecordKind::route
              && static_cast<RecordKind>(DIRECTNET_LEAK) == RecordKind::leak);
static_assert(static_cast<ViaKind>(DIRECTNET_VIA_CONNECTED) == ViaKind::connected
              && static_cast<ViaKind>(DIRECTNET_VIA_DIRECTED_BROADCAST)
                     == ViaKind::directedBroadcast);

namespace {

directnet_prefix convertedPrefix(const PrefixBytes& from, std::uint8_t family,
                                 std::uint8_t length) {
    directnet_prefix to{};
    to.family = family;
    to.length = length;
    std::memcpy(to.address, from.address, sizeof to.address);
    return to;
}

} // namespace

directnet_route converted(const RouteRecord& from, std::uint8_t family) {
    directnet_route to{};
    to.via_set = from.viaSet;
    to.vrf_id = from.vrfId;
    to.source_vrf_id = from.sourceVrfId;
    to.metric = from.metric;
    to.preference = from.preference;
    to.type = from.type;
    to.prefix = convertedPrefix(from.prefix, family, from.length);
    return to;
}

directnet_via converted(const ViaRecord& from, std::uint8_t family) {
    directnet_via to{};
    to.via_id = from.viaId;
    to.vrf_id = from.vrfId;
    to.transport = from.transport;
    to.routing_protocol = from.routingProtocol;
    to.family = family;
    std::memcpy(to.interface_name, from.name, from.nameLength);
    return to;
}

directnet_via_set converted(const ViaSetRecord& from, std::uint8_t /*family*/) {
    directnet_via_set to{};
    to.key = from.key;
    to.via_id = from.viaId;
    to.vrf_id = from.vrfId;
    to.transport = from.transport;
    to.routing_protocol = from.routingProtocol;
    to.flags = from.flags;
    to.family = familyOf(from);
    to.kind = static_cast<std::uint8_t>(from.kind);
    return to;
}

directnet_vrf converted(const VrfRecord& from, std::uint8_t /*family*/) {
    directnet_vrf to{};
    to.ready_time = from.readyTime;
    to.id = from.vrfId;
    to.ipv4_ready = from.ipv4Ready;
    to.ipv6_ready = from.ipv6Ready;
    to.has_rib = from.hasRib;
    to.rib_ready = from.ribReady;
    std::memcpy(to.name, from.name, from.nameLength);
    return to;
}

directnet_leak converted(const LeakRecord& from, std::uint8_t family) {
    directnet_leak to{};
    to.source_vrf_id = from.sourceVrfId;
    to.dest_vrf_id = from.destVrfId;
    to.prefix = convertedPrefix(from.prefix, family, from.length);
    return to;
}

} // namespace Tables
