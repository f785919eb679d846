#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "platform/orb/attribute/Declare.h"
#include "platform/orb/loop/Clock.h"
#include "platform/orb/object/Ptr.h"
#include "platform/orb/object/PtrInterface.h"

namespace Kiln {

/// Many timers on one wake-up of a clock. Time is cut into ticks; a timer fires at the first tick
/// at or after its expiry, one that has expired already at the next tick. Scheduling and cancelling
/// cost O(1).
///
/// The wheel has `initialMaxTicks` slots, one per tick of a round; a timer lies in the slot of its
/// tick, however many rounds ahead that is. Slots are allocated by the bucket when they are first
/// used and given back when no timer is left, so a wheel without timers is as small as its members.
///
/// From inside a callback timers may be scheduled, cancelled and destroyed, and so may the wheel:
/// when the last reference goes, its timers are cancelled.
///
/// Thread rule: one agent thread, no locks.
class TimerWheel : public Orb::Entity {
    ORB_ENTITY(TimerWheel, "Kiln::TimerWheel")
    /// `tickMsecs`: length of a tick. `initialMaxTicks`: number of slots. `preserveOrder`: timers
    /// of one tick fire in the order in which they were scheduled, otherwise in any.
    /// `defaultBucketSize`: number of slots allocated at once.
    ORB_CONSTRUCTOR((Orb::Ptr<const Orb::Clock>, systemClock), (std::uint32_t, tickMsecs),
                    (std::uint32_t, initialMaxTicks), (bool, preserveOrder),
                    (std::uint32_t, defaultBucketSize))

  public:
    class Timer;

    explicit TimerWheel(Arguments arguments);
    ~TimerWheel() override;

    /// Schedules the timer for `expiry`, in seconds of the clock, which must be finite; one that is
    /// pending, on whatever wheel, is moved.
    void schedule(Timer& timer, double expiry);

    std::size_t pendingTimers() const { return pending_; }

  private:
    /// A circular list of timers; empty when it points to itself.
    struct Link {
        Link* previous = this;
        Link* next = this;

        Link() = default;
        Link(const Link&) = delete;
        Link& operator=(const Link&) = delete;

        bool alone() const { return next == this; }
        void insertBefore(Link& other);
        void unlink();
    };

    class Bucket;

    class Wakeup : public Orb::Clock::NotifieeConst {
      public:
        explicit Wakeup(TimerWheel* owner) : owner_(owner) {}
        void onTimeMin() override { owner_->advance(); }

      protected:
        const Orb::PtrInterface* keeper() const override { return owner_; }

      private:
        TimerWheel* owner_;
    };

    double tickTime(std::uint64_t tick) const { return static_cast<double>(tick) * tickSeconds_; }
    std::uint64_t tickReached(double time) const;
    std::uint64_t tickOfExpiry(double expiry) const;

    void place(Timer& timer);
    void remove(Timer& timer);
    void restIfEmpty();
    std::uint64_t nextUsedTick() const;
    void advance();
    void takeDue(std::uint64_t tick);
    bool fireDue();

    double tickSeconds_;
    std::uint64_t tick_ = 0; ///< the last tick whose timers were taken
    std::size_t pending_ = 0;
    std::vector<std::unique_ptr<Bucket>> buckets_; ///< null until first used
    Link due_;                                     ///< taken out of their slot, about to fire
    Wakeup wakeup_{this};
};

/// One timer with its callback. Destroying it cancels it; its own callback may do so.
class TimerWheel::Timer : private TimerWheel::Link {
  public:
    explicit Timer(std::function<void()> callback) : callback_(std::move(callback)) {}
    ~Timer() { cancel(); }

    bool pending() const { return wheel_ != nullptr; }

    /// What it was last scheduled for, seconds of the clock.
    double expiry() const { return expiry_; }

    void cancel();

  private:
    friend class TimerWheel;

    std::function<void()> callback_;
    TimerWheel* wheel_ = nullptr; ///< null unless pending
    bool due_ = false;            ///< taken out of its slot
    double expiry_ = 0;
    std::uint64_t tick_ = 0;
};

} // namespace Kiln
