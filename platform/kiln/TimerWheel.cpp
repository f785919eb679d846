#include "platform/kiln/TimerWheel.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/kiln/TimerWheelBucket.h"
#include "platform/orb/Assert.h"

namespace Kiln {

namespace {

// Times are sums of decimal fractions: a time this part of a tick off a tick is on it.
constexpr double tolerance = 1e-4;
// Ticks above this are no longer exact as doubles; no clock gets there.
constexpr double lastTick = 9e15;

} // namespace

void TimerWheel::Link::insertBefore(Link& other) {
    next = &other;
    previous = other.previous;
    previous->next = this;
    other.previous = this;
}

void TimerWheel::Link::unlink() {
    previous->next = next;
    next->previous = previous;
    previous = next = this;
}

void TimerWheel::Timer::cancel() {
    if (pending()) {
        TimerWheel& wheel = *wheel_;
        wheel.remove(*this);
        wheel.restIfEmpty();
    }
}

TimerWheel::TimerWheel(Orb::Ptr<const Orb::Clock> systemClock, std::uint32_t tickMsecs,
                       std::uint32_t initialMaxTicks, bool preserveOrder,
                       std::uint32_t defaultBucketSize)
    : systemClock_(std::move(systemClock)), tickSeconds_(tickMsecs / 1000.0),
      slots_(initialMaxTicks), bucketSize_(defaultBucketSize), preserveOrder_(preserveOrder) {
    ORB_ASSERT(tickMsecs > 0 && initialMaxTicks > 0 && defaultBucketSize > 0,
               "tickMsecs > 0 && initialMaxTicks > 0 && defaultBucketSize > 0");
    wakeup_.notifierIs(systemClock_);
}

TimerWheel::~TimerWheel() {
    const auto removeAll = [this](Link& list) {
        while (!list.alone()) {
            remove(static_cast<Timer&>(*list.next));
        }
    };
    removeAll(due_);
    while (pending_ > 0) {
        const auto slot = static_cast<std::uint32_t>(nextUsedTick() % slots_);
        removeAll(buckets_[slot / bucketSize_]->slot(slot % bucketSize_));
    }
}

/// The last tick that has begun at `time`.
std::uint64_t TimerWheel::tickReached(double time) const {
    return static_cast<std::uint64_t>(std::max(0.0, std::floor(time / tickSeconds_ + tolerance)));
}

/// The first tick that does not begin before `expiry`.
std::uint64_t TimerWheel::tickOfExpiry(double expiry) const {
    return static_cast<std::uint64_t>(
        std::clamp(std::ceil(expiry / tickSeconds_ - tolerance), 0.0, lastTick));
}

void TimerWheel::schedule(Timer& timer, double expiry) {
    ORB_ASSERT(std::isfinite(expiry), "std::isfinite( expiry )");
    if (timer.wheel_ == this) {
        remove(timer); // keeps the buckets: they are about to be used again
    } else {
        timer.cancel();
    }
    const std::uint64_t present = std::max(tick_, tickReached(systemClock_->now()));
    if (pending_ == 0) {
        tick_ = present;
    }
    timer.expiry_ = expiry;
    timer.tick_ = std::max(tickOfExpiry(expiry), present + 1);
    place(timer);
    wakeup_.timeMinIs(std::min(wakeup_.timeMin(), tickTime(timer.tick_)));
}

void TimerWheel::place(Timer& timer) {
    const auto slot = static_cast<std::uint32_t>(timer.tick_ % slots_);
    buckets_.resize((slots_ + bucketSize_ - 1) / bucketSize_);
    auto& bucket = buckets_[slot / bucketSize_];
    if (bucket == nullptr) {
        bucket = std::make_unique<Bucket>(bucketSize_);
    }
    Link& list = bucket->slot(slot % bucketSize_);
    timer.insertBefore(preserveOrder_ ? list : *list.next);
    bucket->usedIs(slot % bucketSize_, true);
    timer.wheel_ = this;
    ++pending_;
}

void TimerWheel::remove(Timer& timer) {
    const bool lastOfList = timer.next == timer.previous;
    timer.unlink();
    timer.wheel_ = nullptr;
    --pending_;
    if (lastOfList && !timer.due_) {
        const auto slot = static_cast<std::uint32_t>(timer.tick_ % slots_);
        buckets_[slot / bucketSize_]->usedIs(slot % bucketSize_, false);
    }
    timer.due_ = false;
}

void TimerWheel::restIfEmpty() {
    if (pending_ == 0) {
        wakeup_.timeMinIs(Orb::Clock::never);
        decltype(buckets_)().swap(buckets_);
    }
}

/// The next tick whose slot is used, be it by timers of a later round. There must be one.
std::uint64_t TimerWheel::nextUsedTick() const {
    const auto start = static_cast<std::uint32_t>((tick_ + 1) % slots_);
    std::uint32_t slot = start;
    while (true) {
        const auto& bucket = buckets_[slot / bucketSize_];
        const std::uint32_t base = slot / bucketSize_ * bucketSize_;
        const std::uint32_t found =
            base + (bucket == nullptr ? bucketSize_ : bucket->nextUsed(slot % bucketSize_));
        if (bucket != nullptr && found < base + bucketSize_) {
            return tick_ + 1 + (found >= start ? found - start : found + slots_ - start);
        }
        slot = found < slots_ ? found : 0;
    }
}

void TimerWheel::advance() {
    const std::uint64_t reached = tickReached(systemClock_->now());
    if (!fireDue()) {
        return;
    }
    while (pending_ > 0) {
        const std::uint64_t next = nextUsedTick();
        if (next > reached) {
            wakeup_.timeMinIs(tickTime(next));
            break;
        }
        tick_ = next;
        takeDue(next);
        // Armed while callbacks run, so that one that throws does not strand the rest.
        wakeup_.timeMinIs(tickTime(next));
        if (!fireDue()) {
            return;
        }
    }
    tick_ = std::max(tick_, reached);
    restIfEmpty();
}

void TimerWheel::takeDue(std::uint64_t tick) {
    const auto slot = static_cast<std::uint32_t>(tick % slots_);
    Bucket& bucket = *buckets_[slot / bucketSize_];
    Link& list = bucket.slot(slot % bucketSize_);
    for (Link* link = list.next; link != &list;) {
        Timer& timer = static_cast<Timer&>(*link);
        link = link->next;
        if (timer.tick_ == tick) {
            timer.unlink();
            timer.insertBefore(due_);
            timer.due_ = true;
        }
    }
    bucket.usedIs(slot % bucketSize_, !list.alone());
}

/// Returns false once the last reference to the wheel has gone, its own wake-up's aside.
bool TimerWheel::fireDue() {
    while (!due_.alone()) {
        Timer& timer = static_cast<Timer&>(*due_.next);
        remove(timer);
        const auto callback = timer.callback_; // the timer may go while it runs
        callback();
        if (references() == 1) {
            return false;
        }
    }
    return true;
}

} // namespace Kiln
