#include "platform/orb/loop/ActivityManager.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include <poll.h>

#include "platform/orb/loop/FileDescriptorReactor.h"
#include "platform/orb/loop/SimulatedClock.h"
#include "platform/orb/value/Assert.h"
#include "platform/orb/value/Error.h"

namespace Orb {

namespace {

thread_local ActivityManager* installed = nullptr;

} // namespace

ActivityManager* activityManager() {
    if (installed == nullptr) {
        throw NoActivityManagerError("there is no Orb::ActivityManager on this thread");
    }
    return installed;
}

ActivityManager::ActivityManager(Ptr<Clock> clock)
    : clock_(std::move(clock)), simulated_(dynamic_cast<SimulatedClock*>(clock_.get())),
      outer_(std::exchange(installed, this)) {}

ActivityManager::~ActivityManager() {
    ORB_ASSERT(installed == this, "activityManager() == this");
    ORB_ASSERT(descriptors_.empty(), "descriptors.empty()");
    installed = outer_;
}

void ActivityManager::runOnce(double maxWait) {
    std::vector<pollfd> polled;
    std::vector<std::uint64_t> ids;
    for (const auto& [id, reactor] : descriptors_) {
        const int events =
            (reactor->wantsRead() ? POLLIN : 0) | (reactor->wantsWrite() ? POLLOUT : 0);
        if (events != 0) {
            polled.push_back({reactor->descriptor(), static_cast<short>(events), 0});
            ids.push_back(id);
        }
    }
    if (::poll(polled.data(), polled.size(), pollTimeout(maxWait)) < 0) {
        if (errno != EINTR) {
            throw Error(std::string("poll: ") + std::strerror(errno));
        }
        return;
    }
    for (std::size_t index = 0; index < polled.size(); ++index) {
        if (polled[index].revents != 0) {
            dispatch(ids[index], polled[index].revents);
        }
    }
    clock_->runDue();
}

/// Milliseconds, rounded up so that the loop does not spin just before a wake-up.
int ActivityManager::pollTimeout(double maxWait) const {
    if (simulated_ != nullptr) {
        return 0;
    }
    const double wait = std::min(maxWait, clock_->nextWakeup() - clock_->now());
    return static_cast<int>(std::clamp(std::ceil(wait * 1000), 0.0, 1e9));
}

/// Calls the reactor, which an earlier callback of the same round may have destroyed. Trouble with
/// the descriptor counts as readiness: the reactor's next read or write tells it what is wrong.
void ActivityManager::dispatch(std::uint64_t id, short events) {
    const auto wanting = [this, id](bool (FileDescriptorReactor::*wants)() const) {
        const auto found = descriptors_.find(id);
        return found != descriptors_.end() && (found->second->*wants)() ? found->second : nullptr;
    };
    if ((events & ~POLLOUT) != 0) {
        if (auto* reactor = wanting(&FileDescriptorReactor::wantsRead)) {
            reactor->onReadable();
        }
    }
    if ((events & ~POLLIN) != 0) {
        if (auto* reactor = wanting(&FileDescriptorReactor::wantsWrite)) {
            reactor->onWritable();
        }
    }
}

SimulatedClock& ActivityManager::simulated() const {
    ORB_ASSERT(simulated_ != nullptr, "simulatedClock != 0");
    return *simulated_;
}

bool ActivityManager::runUntilIdle(double maxSeconds) {
    SimulatedClock& clock = simulated();
    const double limit = clock.now() + maxSeconds;
    while (clock.nextWakeup() <= limit && clock.advanceToNextWakeup()) {
        clock.runDue();
    }
    return clock.nextWakeup() == Clock::never;
}

void ActivityManager::runUntil(double time) {
    SimulatedClock& clock = simulated();
    while (clock.nextWakeup() <= time) {
        clock.advanceToNextWakeup();
        clock.runDue();
    }
    clock.nowIs(std::max(clock.now(), time));
}

} // namespace Orb
