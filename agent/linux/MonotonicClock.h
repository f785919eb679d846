#pragma once

#include <functional>

namespace Agent::Linux {

/// Seconds on a clock that never falls. Whoever hosts a monitor or a watch may hand in its own;
/// retry times are told on the same clock.
using MonotonicClock = std::function<double()>;

/// The operating system's steady clock.
double steadySeconds();

} // namespace Agent::Linux
