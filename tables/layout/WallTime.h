#pragma once

#include <cstdint>
#include <ctime>

namespace Tables {

/// The time of day as tables have it, in nanoseconds since 1970.
inline std::uint64_t wallTime() {
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * 1'000'000'000
           + static_cast<std::uint64_t>(now.tv_nsec);
}

} // namespace Tables
