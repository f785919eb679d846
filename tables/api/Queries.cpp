#include <cstddef>
#include <cstdint>
#include <cstring>

#include "tables/api/Convert.h"
#include "tables/api/View.h"

// Asking the view.

namespace {

using namespace Tables;

constexpr bool wants(int asked, std::uint8_t family) {
    return asked == DIRECTNET_BOTH_FAMILIES || asked == family;
}

constexpr bool wantsVrf(std::uint32_t asked, std::uint32_t vrfId) {
    return asked == DIRECTNET_ALL_VRFS || asked == vrfId;
}

constexpr std::uint32_t vrfOf(const LeakRecord& leak) { return leak.sourceVrfId; }
template <typename Record>
constexpr std::uint32_t vrfOf(const Record& record) {
    return record.vrfId;
}

/// Gives the callback each record of the mirror that is asked for.
template <typename Mirror, typename Callback>
int eachOf(const Mirror& mirror, std::uint32_t vrfId, int asked, std::uint8_t family,
           Callback callback, void* context) {
    if (!wants(asked, family)) {
        return 0;
    }
    return mirror.each([&](const auto& record) {
        if (!wantsVrf(vrfId, vrfOf(record))) {
            return 0;
        }
        const auto given = converted(record, family);
        return callback(&given, context);
    });
}

template <typename Mirror, typename Callback>
int eachOfBoth(const Mirror& mirror4, const Mirror& mirror6, std::uint32_t vrfId, int family,
               Callback callback, void* context) {
    const int ended = eachOf(mirror4, vrfId, family, ipv4, callback, context);
    return ended != 0 ? ended : eachOf(mirror6, vrfId, family, ipv6, callback, context);
}

/// Copies the record out if there is one.
template <typename Record, typename Given>
int give(const Record* record, std::uint8_t family, Given* to) {
    if (record == nullptr) {
        return 0;
    }
    *to = converted(*record, family);
    return 1;
}

template <typename Mirror, typename Departures>
auto findAlsoGone(const Mirror& mirror, const Departures& gone, const RecordKey& key) {
    const auto* const record = mirror.find(key);
    return record != nullptr ? record : gone.find(key);
}

/// The first `length` bits of an address, the rest zero.
void mask(PrefixBytes& address, unsigned length) {
    for (std::uint8_t& byte : address.address) {
        const unsigned kept = length < 8 ? length : 8;
        byte = static_cast<std::uint8_t>(byte & ~(0xFFU >> kept));
        length -= kept;
    }
}

template <std::size_t size>
const RouteRecord* longestMatch(const directnet_tables::RouteMirror& routes,
                                const std::array<std::uint32_t, size>& lengths, std::uint32_t vrfId,
                                std::uint8_t family, const void* address) {
    PrefixBytes prefix{};
    std::memcpy(prefix.address, address, family == ipv4 ? 4 : 16);
    for (std::size_t length = size; length-- > 0;) {
        if (lengths[length] != 0) {
            mask(prefix, static_cast<unsigned>(length));
            const RecordKey key =
                prefixKey(prefix, family, static_cast<std::uint8_t>(length), vrfId, 0);
            if (const RouteRecord* const route = routes.find(key)) {
                return route;
            }
        }
    }
    return nullptr;
}

} // namespace

std::size_t directnet_tables_vrf_count(const directnet_tables* tables) {
    return tables->vrfs.count();
}

int directnet_tables_vrf_at(const directnet_tables* tables, std::size_t index, directnet_vrf* vrf) {
    return tables->vrfs.each(
        [&](const VrfRecord& record) { return index-- == 0 ? give(&record, 0, vrf) : 0; });
}

int directnet_tables_vrf_by_id(const directnet_tables* tables, std::uint32_t id,
                               directnet_vrf* vrf) {
    return give(findAlsoGone(tables->vrfs, tables->goneVrfs, vrfKey(id)), 0, vrf);
}

int directnet_tables_vrf_by_name(const directnet_tables* tables, const char* name,
                                 directnet_vrf* vrf) {
    const std::size_t length = std::strlen(name);
    return tables->vrfs.each([&](const VrfRecord& record) {
        const bool is = record.nameLength == length && std::memcmp(record.name, name, length) == 0;
        return is ? give(&record, 0, vrf) : 0;
    });
}

int directnet_tables_each_route(const directnet_tables* tables, std::uint32_t vrf_id, int family,
                                directnet_route_callback callback, void* context) {
    return eachOfBoth(tables->routes4, tables->routes6, vrf_id, family, callback, context);
}

int directnet_tables_each_via(const directnet_tables* tables, std::uint32_t vrf_id, int family,
                              directnet_via_callback callback, void* context) {
    return eachOfBoth(tables->vias4, tables->vias6, vrf_id, family, callback, context);
}

int directnet_tables_each_via_set(const directnet_tables* tables, std::uint32_t vrf_id, int family,
                                  directnet_via_set_callback callback, void* context) {
    return tables->viaSets.each([&](const ViaSetRecord& set) {
        if (!wants(family, familyOf(set)) || !wantsVrf(vrf_id, set.vrfId)) {
            return 0;
        }
        const directnet_via_set given = converted(set);
        return callback(&given, context);
    });
}

int directnet_tables_each_leak(const directnet_tables* tables, std::uint32_t vrf_id, int family,
                               directnet_leak_callback callback, void* context) {
    return eachOfBoth(tables->leaks4, tables->leaks6, vrf_id, family, callback, context);
}

void directnet_tables_sizes(const directnet_tables* tables, directnet_sizes* sizes) {
    *sizes = {};
    sizes->ipv4_routes = tables->routes4.count();
    sizes->ipv6_routes = tables->routes6.count();
    sizes->ipv4_vias = tables->vias4.count();
    sizes->ipv6_vias = tables->vias6.count();
    tables->viaSets.each([&](const ViaSetRecord& set) {
        ++(familyOf(set) == ipv4 ? sizes->ipv4_via_sets : sizes->ipv6_via_sets);
        return 0;
    });
    sizes->vrfs = tables->vrfs.count();
    sizes->leaks = tables->leaks4.count() + tables->leaks6.count();
}

int directnet_tables_find(const directnet_tables* tables, std::uint32_t vrf_id,
                          const directnet_prefix* prefix, directnet_route* route) {
    PrefixBytes bytes;
    std::memcpy(bytes.address, prefix->address, sizeof bytes.address);
    const RecordKey key = prefixKey(bytes, prefix->family, prefix->length, vrf_id, 0);
    const auto& routes = prefix->family == ipv4 ? tables->routes4 : tables->routes6;
    return give(routes.find(key), prefix->family, route);
}

int directnet_tables_match(const directnet_tables* tables, std::uint32_t vrf_id, int family,
                           const void* address, directnet_route* route) {
    if (family == ipv4) {
        return give(longestMatch(tables->routes4, tables->lengths4, vrf_id, ipv4, address), ipv4,
                    route);
    }
    if (family == ipv6) {
        return give(longestMatch(tables->routes6, tables->lengths6, vrf_id, ipv6, address), ipv6,
                    route);
    }
    return 0;
}

int directnet_tables_resolve(const directnet_tables* tables, const directnet_route* route,
                             directnet_hop* hop) {
    *hop = {};
    const ViaSetRecord* const set =
        findAlsoGone(tables->viaSets, tables->goneViaSets, viaSetKey(route->via_set));
    if (set == nullptr) {
        return 0;
    }
    const bool is4 = familyOf(*set) == ipv4;
    const ViaRecord* const via = findAlsoGone(
        is4 ? tables->vias4 : tables->vias6, is4 ? tables->goneVias4 : tables->goneVias6,
        viaKey(set->vrfId, set->viaId, set->transport, set->routingProtocol));
    if (via == nullptr) {
        return 0;
    }
    hop->kind = static_cast<directnet_via_kind>(set->kind);
    std::memcpy(hop->interface_name, via->name, via->nameLength);
    return 1;
}
