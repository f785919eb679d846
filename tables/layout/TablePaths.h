#pragma once

#include <cstdint>
#include <cstring>

#include "tables/layout/Records.h"

/// Where the tables of a folder are mounted.
namespace Tables::Paths {

inline constexpr const char* ipv4Routes = "routing/rib/routeConfig/ipv4/connected";
inline constexpr const char* ipv6Routes = "routing/rib/routeConfig/ipv6/connected";
inline constexpr const char* ipv4Vias = "routing/rib/viaConfig/ipv4/connected";
inline constexpr const char* ipv6Vias = "routing/rib/viaConfig/ipv6/connected";
inline constexpr const char* viaSets = "routing/rib/viaSet/connected";
inline constexpr const char* vrfs = "routing/rib/vrfStatus/connected";
inline constexpr const char* ipv4Leaks = "routing/directNetLeakStatus";
inline constexpr const char* ipv6Leaks = "routing6/directNetLeakStatus";

} // namespace Tables::Paths

namespace Tables {

/// The family of the prefixes in the table that is mounted there; 0 for one that has none.
inline std::uint8_t familyAt(const char* path) {
    for (const char* known : {Paths::ipv4Routes, Paths::ipv4Leaks}) {
        if (std::strcmp(path, known) == 0) {
            return ipv4;
        }
    }
    for (const char* known : {Paths::ipv6Routes, Paths::ipv6Leaks}) {
        if (std::strcmp(path, known) == 0) {
            return ipv6;
        }
    }
    return 0;
}

} // namespace Tables
