#pragma once

#include <chrono>

#include "platform/orb/loop/Clock.h"

namespace Orb {

/// The machine's steady clock, counted from one at the clock's creation.
class RealClock final : public Clock {
  public:
    double now() const override;

  private:
    const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

} // namespace Orb
