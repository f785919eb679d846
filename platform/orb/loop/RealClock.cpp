#include "platform/orb/loop/RealClock.h"

namespace Orb {

double RealClock::now() const {
    return 1.0 + std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
}

} // namespace Orb
