#pragma once

#include <cstdint>
#include <map>

#include "platform/orb/loop/Clock.h"
#include "platform/orb/object/Ptr.h"

namespace Orb {

class FileDescriptorReactor;
class SimulatedClock;

/// The event loop of the agent thread: a clock and the file descriptors that reactors wait for.
/// While it lives it is the one that activityManager() returns on the thread that made it; made
/// inside another one's life, it stands in for that one.
class ActivityManager {
  public:
    explicit ActivityManager(Ptr<Clock> clock);
    ActivityManager(const ActivityManager&) = delete;
    ActivityManager& operator=(const ActivityManager&) = delete;
    ~ActivityManager();

    const Ptr<Clock>& clock() const { return clock_; }

    /// Waits until a descriptor is ready, a reactor of the clock is due or `maxWait` seconds have
    /// passed, then calls what is ready and what is due, each once. Returns early when a signal
    /// arrives. On a simulated clock it does not wait. Throws Error when polling fails.
    void runOnce(double maxWait);

    /// Moves the simulated clock from wake-up to wake-up until none is pending. Returns false, with
    /// the time where it stands, if one is still pending after `maxSeconds` of simulated time.
    bool runUntilIdle(double maxSeconds = 1e6);

    /// Moves the simulated clock to `time` by way of all wake-ups due until then.
    void runUntil(double time);

  private:
    friend class FileDescriptorReactor;

    int pollTimeout(double maxWait) const;
    void dispatch(std::uint64_t id, short events);
    SimulatedClock& simulated() const;

    Ptr<Clock> clock_;
    SimulatedClock* simulated_; ///< the clock, if it is a simulated one
    ActivityManager* outer_;
    std::map<std::uint64_t, FileDescriptorReactor*> descriptors_; ///< by order of arrival
    std::uint64_t nextDescriptor_ = 0;
};

/// The activity manager of this thread. Throws NoActivityManagerError where there is none.
ActivityManager* activityManager();

} // namespace Orb
