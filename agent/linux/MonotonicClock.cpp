#include "agent/linux/MonotonicClock.h"

#include <chrono>

namespace Agent::Linux {

double steadySeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

} // namespace Agent::Linux
