#pragma once

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
