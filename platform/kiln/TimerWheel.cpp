#include "platform/kiln/TimerWheel.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/kiln/TimerWheelBucket.h"
#include "platform/orb/attribute/DefineType.h"
#include "platform/orb/value/Assert.h"

namespace Kiln {

ORB_DEFINE_TYPE(TimerWheel)

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

TimerWheel::TimerWheel(Arguments arguments)
    : arguments_(std::move(arguments)), tickSeconds_(tickMsecs() / 1000.0) {
    ORB_ASSERT(tickMsecs() > 0 && initialMaxTicks() > 0 && defaultBucketSize() > 0,
               "tickMsecs > 0 && initialMaxTicks > 0 && defaultBucketSize > 0");
    wakeup_.notifierIs(systemClock());
}

TimerWheel::~TimerWheel() {
    const auto removeAll = [this](Link& list) {
        while (!list.alone()) {
            remove(static_cast<Timer&>(*list.next));
        }
    };
    removeAll(due_);
    while (pending_ > 0) {
        const auto slot = static_cast<std::uint32_t>(nextUsedTick() % initialMaxTicks());
        removeAll(buckets_[slot / defaultBucketSize()]->slot(slot % defaultBucketSize()));
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
    const std::uint64_t present = std::max(tick_, tickReached(systemClock()->now()));
    if (pending_ == 0) {
        tick_ = present;
    }
    timer.expiry_ = expiry;
    timer.tick_ = std::max(tickOfExpiry(expiry), present + 1);
    place(timer);
    wakeup_.timeMinIs(std::min(wakeup_.timeMin(), tickTime(timer.tick_)));
}

void TimerWheel::place(Timer& timer) {
    const auto slot = static_cast<std::uint32_t>(timer.tick_ % initialMaxTicks());
    buckets_.resize((initialMaxTicks() + defaultBucketSize() - 1) / defaultBucketSize());
    auto& bucket = buckets_[slot / defaultBucketSize()];
    if (bucket == nullptr) {
        bucket = std::make_unique<Bucket>(defaultBucketSize());
    }
    Link& list = bucket->slot(slot % defaultBucketSize());
    timer.insertBefore(preserveOrder() ? list : *list.next);
    bucket->usedIs(slot % defaultBucketSize(), true);
    timer.wheel_ = this;
    ++pending_;
}

void TimerWheel::remove(Timer& timer) {
    const bool lastOfList = timer.next == timer.previous;
    timer.unlink();
    timer.wheel_ = nullptr;
    --pending_;
    if (lastOfList && !timer.due_) {
        const auto slot = static_cast<std::uint32_t>(timer.tick_ % initialMaxTicks());
        buckets_[slot / defaultBucketSize()]->usedIs(slot % defaultBucketSize(), false);
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
    const auto start = static_cast<std::uint32_t>((tick_ + 1) % initialMaxTicks());
    std::uint32_t slot = start;
    while (true) {
        const auto& bucket = buckets_[slot / defaultBucketSize()];
        const std::uint32_t base = slot / defaultBucketSize() * defaultBucketSize();
        const std::uint32_t found =
            base
            + (bucket == nullptr ? defaultBucketSize()
                                 : bucket->nextUsed(slot % defaultBucketSize()));
        if (bucket != nullptr && found < base + defaultBucketSize()) {
            return tick_ + 1 + (found >= start ? found - start : found + initialMaxTicks() - start);
        }
        slot = found < initialMaxTicks() ? found : 0;
    }
}

void TimerWheel::advance() {
    const std::uint64_t reached = tickReached(systemClock()->now());
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
    const auto slot = static_cast<std::uint32_t>(tick % initialMaxTicks());
    Bucket& bucket = *buckets_[slot / defaultBucketSize()];
    Link& list = bucket.slot(slot % defaultBucketSize());
    for (Link* link = list.next; link != &list;) {
        Timer& timer = static_cast<Timer&>(*link);
        link = link->next;
        if (timer.tick_ == tick) {
            timer.unlink();
            timer.insertBefore(due_);
            timer.due_ = true;
        }
    }
    bucket.usedIs(slot % defaultBucketSize(), !list.alone());
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
