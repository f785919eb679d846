#pragma once

#include "platform/orb/loop/Clock.h"

namespace Orb {

/// A clock that stands still until it is moved. It starts at one second.
class SimulatedClock final : public Clock {
  public:
    double now() const override { return now_; }

    /// Moves the time forward; wakes nobody. Throws RangeError for an earlier time than now.
    void nowIs(double time);

    /// Moves the time to the next wake-up, if that lies ahead. Returns whether any reactor is
    /// armed.
    bool advanceToNextWakeup();

  private:
    double now_ = 1.0;
};

} // namespace Orb
