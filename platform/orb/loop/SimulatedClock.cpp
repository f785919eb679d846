#include "platform/orb/loop/SimulatedClock.h"

#include <algorithm>

#include "platform/orb/value/Error.h"

namespace Orb {

void SimulatedClock::nowIs(double time) {
    if (!(time >= now_ && time < never)) {
        throw RangeError("SimulatedClock::now < current now not allowed");
    }
    now_ = time;
}

bool SimulatedClock::advanceToNextWakeup() {
    const double next = nextWakeup();
    if (next == never) {
        return false;
    }
    now_ = std::max(now_, next);
    return true;
}

} // namespace Orb
