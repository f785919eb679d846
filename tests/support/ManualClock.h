#pragma once

#include <algorithm>

#include "platform/orb/loop/Clock.h"

namespace Routing::DirectNet {

/// A clock that a test moves. It may also move by itself, by `secondsPerRead` at each look at it,
/// as a clock does during work that takes time.
class ManualClock final : public Orb::Clock {
  public:
    double now() const override {
        const double time = now_;
        now_ += secondsPerRead;
        return time;
    }

    void advanceTo(double time) { now_ = std::max(now_, time); }

    double secondsPerRead = 0;

  private:
    mutable double now_ = 1;
};

} // namespace Routing::DirectNet
