#include "platform/orb/loop/Clock.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/orb/value/Assert.h"

namespace Orb {

bool Clock::Earlier::operator()(const NotifieeConst* a, const NotifieeConst* b) const {
    return a->due_ != b->due_ ? a->due_ < b->due_ : a->arming_ < b->arming_;
}

double Clock::nextWakeup() const {
    if (armed_.empty()) {
        return never;
    }
    return (*armed_.begin())->due_;
}

bool Clock::isDue(double now, std::uint64_t armedBefore) const {
    return !armed_.empty() && (*armed_.begin())->due_ <= now
           && (*armed_.begin())->arming_ < armedBefore;
}

bool Clock::runOne() {
    if (!isDue(now(), nextArming_)) {
        return false;
    }
    const Ptr<Clock> keep(this);
    runFirst();
    return true;
}

std::size_t Clock::runDue() {
    const Ptr<Clock> keep(this);
    const double start = now();
    const std::uint64_t armedBefore = nextArming_;
    std::size_t woken = 0;
    // What is armed meanwhile is due at `start` or later, hence behind everything this pass calls.
    for (; isDue(start, armedBefore); ++woken) {
        runFirst();
    }
    return woken;
}

void Clock::runFirst() {
    NotifieeConst& reactor = **armed_.begin();
    reactor.timeMinIs(never);
    reactor.wake();
}

void Clock::arm(NotifieeConst& reactor) const {
    reactor.due_ = std::max(reactor.timeMin_, now());
    reactor.arming_ = nextArming_++;
    armed_.insert(&reactor);
}

void Clock::disarm(NotifieeConst& reactor) const { armed_.erase(&reactor); }

Clock::NotifieeConst::~NotifieeConst() { timeMinIs(never); }

void Clock::NotifieeConst::notifierIs(Ptr<const Clock> clock) {
    if (clock == clock_) {
        return;
    }
    const double time = timeMin_;
    timeMinIs(never);
    clock_ = std::move(clock);
    timeMinIs(time);
}

void Clock::NotifieeConst::timeMinIs(double time) {
    ORB_ASSERT(!std::isnan(time), "!std::isnan( timeMin )");
    if (time == timeMin_) {
        return;
    }
    if (clock_ != nullptr && timeMin_ != never) {
        clock_->disarm(*this);
    }
    timeMin_ = time;
    if (clock_ != nullptr && timeMin_ != never) {
        clock_->arm(*this);
    }
}

void Clock::NotifieeConst::wake() {
    const PtrInterface* const held = keeper();
    if (held == nullptr) {
        onTimeMin();
    } else if (!held->orbMarkedForDeletion()) {
        const Ptr<const PtrInterface> keep(held);
        onTimeMin();
    }
}

} // namespace Orb
