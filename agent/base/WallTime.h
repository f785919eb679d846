#pragma once

#include <cstdint>
#include <string>

namespace Agent {

/// A time of day, in nanoseconds since 1970, in local time: "2026-11-21T22:15:10+00:00".
std::string wallTimeText(std::uint64_t nanoseconds);

/// The time of day now, in nanoseconds since 1970.
std::uint64_t wallNow();

} // namespace Agent
