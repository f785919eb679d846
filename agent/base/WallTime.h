#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Agent {

/// A time of day, in nanoseconds since 1970, in local time: "2026-11-21T22:15:10+00:00".
std::string wallTimeText(std::uint64_t nanoseconds);

/// The time of day now, in nanoseconds since 1970.
std::uint64_t wallNow();

/// A line that is written now, with the time of day to the microsecond: before a line for people,
/// as the first member, "date", of a JSON object.
std::string stamped(std::string_view line, bool isJson);

} // namespace Agent
