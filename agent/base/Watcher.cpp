#include "agent/base/Watcher.h"

#include <utility>

namespace Agent {

Watcher::Watcher(int descriptor, Orb::Ptr<const Orb::Clock> clock, std::function<void()> callback)
    : callback_(std::move(callback)), descriptor_(descriptor, *this), timer_(*this) {
    timer_.notifierIs(std::move(clock));
}

} // namespace Agent
