#pragma once

#include <functional>
#include <string>

namespace Agent {

using RingReport = std::function<void(const std::string& message)>;

/// Where the ring trace of a command goes unless somebody says.
enum class RingDefault { nowhere, stateFolder };

/// Chooses the file of the ring trace, before the library's root is made: `asked` unless it is
/// empty, else what the environment variable RLFILE says already, else the default, which is never
/// the current folder. In the state folder rings of processes that have ended are removed, but for
/// the newest. Where that folder cannot be had there is no ring, and the report says so.
void placeRing(const std::string& asked, RingDefault otherwise, const RingReport& report);

/// Says, once, why the ring trace is not written, if it is not though it was to be.
void reportRing(const RingReport& report);

} // namespace Agent
