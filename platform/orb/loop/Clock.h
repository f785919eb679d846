#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <set>

#include "platform/orb/object/Ptr.h"
#include "platform/orb/object/PtrInterface.h"

namespace Orb {

/// A source of time that wakes the reactors waiting on it. Time is in seconds, never falls and is
/// never zero, since zero stands for "never" in what is written from it.
///
/// Reactors are woken only from runDue() and runOne(), in the order of their times and, at equal
/// times, in the order in which they were armed. A time that had passed when it was armed counts as
/// the time of arming, so a reactor that keeps asking for "now" lets all others have their turn.
///
/// Thread rule: one agent thread, no locks.
class Clock : public PtrInterface {
  public:
    class NotifieeConst;

    static constexpr double never = std::numeric_limits<double>::infinity();

    virtual double now() const = 0;

    /// When the next reactor is due; `never` if none is armed.
    double nextWakeup() const;

    /// Calls one reactor that is due. Returns whether there was one.
    bool runOne();

    /// Calls every reactor that is due and was armed before this call. Returns how many there were.
    std::size_t runDue();

  private:
    struct Earlier {
        bool operator()(const NotifieeConst* a, const NotifieeConst* b) const;
    };

    void arm(NotifieeConst& reactor) const;
    void disarm(NotifieeConst& reactor) const;
    bool isDue(double now, std::uint64_t armedBefore) const;
    void runFirst();

    // Watching a clock does not change it for anybody else, so reactors hold it const.
    mutable std::set<NotifieeConst*, Earlier> armed_;
    mutable std::uint64_t nextArming_ = 0;
};

/// Waits for a time on a clock. Disarmed before its callback, from inside which it may be armed
/// again, re-pointed or destroyed.
class Clock::NotifieeConst {
  public:
    NotifieeConst() = default;
    NotifieeConst(const NotifieeConst&) = delete;
    NotifieeConst& operator=(const NotifieeConst&) = delete;
    virtual ~NotifieeConst();

    const Clock* notifier() const { return clock_.get(); }

    /// Re-points the reactor, to nothing with null. An armed reactor stays armed for its time.
    void notifierIs(Ptr<const Clock> clock);

    /// When to be woken; `never` while nothing is scheduled.
    double timeMin() const { return timeMin_; }
    void timeMinIs(double time);

    /// The time has come.
    virtual void onTimeMin() = 0;

  protected:
    /// The object on whose behalf the reactor waits, if it is reference counted: it is kept alive
    /// during the callback, and once it is marked for deletion the reactor is not called any more.
    virtual const PtrInterface* keeper() const { return nullptr; }

  private:
    friend class Clock;

    void wake();

    Ptr<const Clock> clock_;
    double timeMin_ = never;
    double due_ = never; ///< timeMin, but not before the time of arming; order in the clock
    std::uint64_t arming_ = 0;
};

} // namespace Orb
