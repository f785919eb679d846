#pragma once

#include <cstdint>

namespace Tables {

/// The records of the tables. A record is one slot of its table's file and means the same in every
/// process: numbers in the machine's byte order, addresses in network order, names as bytes that no
/// zero ends. Bytes that are not named are zero.
///
/// Every record begins with its slot's word, see Slot.h, and is a multiple of eight bytes.

inline constexpr std::uint32_t noVrf = 0xFFFFFF;

/// The families that a record may name, the numbers of the socket interface.
inline constexpr std::uint8_t ipv4 = 2;
inline constexpr std::uint8_t ipv6 = 10;

/// A subnet. An IPv4 address stands in the first four bytes; all bits behind `length` are zero.
struct PrefixBytes {
    std::uint8_t address[16];
};

/// One route: key (vrfId, prefix).
struct RouteRecord {
    std::uint32_t word;
    std::uint32_t vrfId;
    std::uint64_t viaSet; ///< the key of a ViaSetRecord; 0 for none
    PrefixBytes prefix;
    std::uint32_t sourceVrfId; ///< the VRF that it is leaked from; noVrf on a local route
    std::uint32_t metric;
    std::uint32_t preference;
    std::uint8_t type;
    std::uint8_t length;
    std::uint8_t family;
    std::uint8_t unused;
};

/// One via: key (vrfId, viaId, transport, routingProtocol). The next hop is the interface itself.
struct ViaRecord {
    static constexpr unsigned maxName = 60;

    std::uint32_t word;
    std::uint32_t vrfId;
    std::uint64_t viaId;
    std::uint8_t transport;
    std::uint8_t routingProtocol;
    std::uint8_t nameLength;
    std::uint8_t unused;
    char name[maxName];
};

/// What the routes through a via set are for. The flags of a set do not tell.
enum class ViaKind : std::uint8_t {
    none = 0,
    connected = 1,
    receive = 2,
    receiveBroadcast = 3,
    directedBroadcast = 4,
};

/// One via set, of one via: key `key`. A set without via has viaId 0.
struct ViaSetRecord {
    std::uint32_t word;
    std::uint8_t flags;
    std::uint8_t familyCode; ///< 2 for IPv4, 4 for IPv6
    ViaKind kind;
    std::uint8_t unused;
    std::uint64_t key;
    std::uint64_t viaId;
    std::uint32_t vrfId;
    std::uint8_t transport;
    std::uint8_t routingProtocol;
    std::uint8_t unused2[2];
};

/// One VRF that has routes: key vrfId.
struct VrfRecord {
    static constexpr unsigned maxName = 100;

    std::uint32_t word;
    std::uint32_t vrfId;
    double readyTime; ///< of the RIB's record: seconds of the writer's clock; 0 for never
    std::uint8_t ipv4Ready;
    std::uint8_t ipv6Ready;
    std::uint8_t hasRib; ///< the RIB waits for the VRF, so it has a record of it
    std::uint8_t ribReady;
    std::uint8_t nameLength;
    char name[maxName];
    std::uint8_t unused[7];
};

/// One leak: key (sourceVrfId, prefix, destVrfId).
struct LeakRecord {
    std::uint32_t word;
    std::uint32_t sourceVrfId;
    std::uint32_t destVrfId;
    std::uint8_t length;
    std::uint8_t family;
    std::uint8_t unused[2];
    PrefixBytes prefix;
};

static_assert(sizeof(RouteRecord) == 48 && sizeof(ViaRecord) == 80 && sizeof(ViaSetRecord) == 32
              && sizeof(VrfRecord) == 128 && sizeof(LeakRecord) == 32);

/// Which records a table has, as its file says.
enum class RecordKind : std::uint32_t { route = 1, via = 2, viaSet = 3, vrf = 4, leak = 5 };

template <typename Record>
inline constexpr RecordKind recordKindOf{};
template <>
inline constexpr RecordKind recordKindOf<RouteRecord> = RecordKind::route;
template <>
inline constexpr RecordKind recordKindOf<ViaRecord> = RecordKind::via;
template <>
inline constexpr RecordKind recordKindOf<ViaSetRecord> = RecordKind::viaSet;
template <>
inline constexpr RecordKind recordKindOf<VrfRecord> = RecordKind::vrf;
template <>
inline constexpr RecordKind recordKindOf<LeakRecord> = RecordKind::leak;

} // namespace Tables
