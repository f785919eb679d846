#pragma once

#include <cstdint>

#include "directnet/tables.h"
#include "tables/layout/Records.h"

namespace Tables {

/// The records as directnet/tables.h has them. `family` is that of the table.
directnet_route converted(const RouteRecord& from, std::uint8_t family);
directnet_via converted(const ViaRecord& from, std::uint8_t family);
directnet_via_set converted(const ViaSetRecord& from, std::uint8_t family = 0);
directnet_vrf converted(const VrfRecord& from, std::uint8_t family = 0);
directnet_leak converted(const LeakRecord& from, std::uint8_t family);

/// The family that a via set's code stands for.
constexpr std::uint8_t familyOf(const ViaSetRecord& set) {
    return set.familyCode == 2 ? ipv4 : ipv6;
}

} // namespace Tables
