#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "tables/layout/Records.h"

namespace Tables {

/// A record's key as numbers. Records of different kinds are never compared.
struct RecordKey {
    std::uint64_t parts[4];

    friend bool operator==(const RecordKey&, const RecordKey&) = default;
};

inline std::uint32_t hashOf(const RecordKey& key) {
    const std::uint64_t sum = key.parts[0] * 0x9E3779B97F4A7C15 + key.parts[1] * 0xC2B2AE3D27D4EB4F
                              + std::rotl(key.parts[2] * 0x165667B19E3779F9, 23)
                              + std::rotl(key.parts[3] * 0xD6E8FEB86659FD93, 41);
    return static_cast<std::uint32_t>(((sum ^ sum >> 32U) * 0x9FB21C651E98DF25) >> 32U);
}

inline RecordKey prefixKey(const PrefixBytes& prefix, std::uint8_t family, std::uint8_t length,
                           std::uint32_t vrfId, std::uint32_t otherVrfId) {
    RecordKey key{{std::uint64_t{vrfId} << 32U | otherVrfId, std::uint64_t{family} << 8U | length}};
    std::memcpy(&key.parts[2], prefix.address, sizeof prefix.address);
    return key;
}

inline RecordKey keyOf(const RouteRecord& route) {
    return prefixKey(route.prefix, route.family, route.length, route.vrfId, 0);
}
inline RecordKey keyOf(const LeakRecord& leak) {
    return prefixKey(leak.prefix, leak.family, leak.length, leak.sourceVrfId, leak.destVrfId);
}
inline RecordKey viaKey(std::uint32_t vrfId, std::uint64_t viaId, std::uint8_t transport,
                        std::uint8_t routingProtocol) {
    return {{vrfId, viaId, std::uint64_t{transport} << 8U | routingProtocol, 0}};
}
inline RecordKey keyOf(const ViaRecord& via) {
    return viaKey(via.vrfId, via.viaId, via.transport, via.routingProtocol);
}
inline RecordKey viaSetKey(std::uint64_t key) { return {{key, 0, 0, 0}}; }
inline RecordKey keyOf(const ViaSetRecord& set) { return viaSetKey(set.key); }
inline RecordKey vrfKey(std::uint32_t vrfId) { return {{vrfId, 0, 0, 0}}; }
inline RecordKey keyOf(const VrfRecord& vrf) { return vrfKey(vrf.vrfId); }

/// Whether it is a subnet of the family: no longer than its addresses, and zero behind its length.
inline bool isPrefix(const PrefixBytes& prefix, std::uint8_t family, std::uint8_t length) {
    if ((family != ipv4 && family != ipv6) || length > (family == ipv4 ? 32 : 128)) {
        return false;
    }
    std::uint64_t halves[2];
    std::memcpy(halves, prefix.address, sizeof halves);
    const auto isZeroBehind = [](std::uint64_t half, unsigned bits) {
        if constexpr (std::endian::native == std::endian::little) {
            half = __builtin_bswap64(half);
        }
        return bits >= 64 || (half & (~std::uint64_t{0} >> bits)) == 0;
    };
    return isZeroBehind(halves[0], length)
           && isZeroBehind(halves[1], length < 64 ? 0 : length - 64U);
}

inline bool isName(const char* name, unsigned length, unsigned maxLength) {
    return length <= maxLength && std::memchr(name, '\0', length) == nullptr;
}

/// Whether a record that was read from a table is one that a table may have. `family` is that of
/// the table, 0 for none.
inline bool isSound(const RouteRecord& route, std::uint8_t family) {
    return route.family == family && isPrefix(route.prefix, route.family, route.length);
}
inline bool isSound(const LeakRecord& leak, std::uint8_t family) {
    return leak.family == family && isPrefix(leak.prefix, leak.family, leak.length);
}
inline bool isSound(const ViaRecord& via, std::uint8_t /*family*/) {
    return isName(via.name, via.nameLength, ViaRecord::maxName);
}
constexpr bool isSound(const ViaSetRecord& set, std::uint8_t /*family*/) {
    return set.kind <= ViaKind::directedBroadcast && (set.familyCode == 2 || set.familyCode == 4);
}
inline bool isSound(const VrfRecord& vrf, std::uint8_t /*family*/) {
    return isName(vrf.name, vrf.nameLength, VrfRecord::maxName);
}

/// Whether two records say the same; how often their slots have changed does not count.
template <typename Record>
bool sameContent(const Record& left, const Record& right) {
    constexpr std::size_t skipped = sizeof left.word;
    return std::memcmp(reinterpret_cast<const unsigned char*>(&left) + skipped,
                       reinterpret_cast<const unsigned char*>(&right) + skipped,
                       sizeof(Record) - skipped)
           == 0;
}

} // namespace Tables
