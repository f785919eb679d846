#include "platform/orb/loop/Clock.h"
#include "platform/orb/loop/ActivityManager.h"
#include "platform/orb/loop/FileDescriptorReactor.h"
#include "platform/orb/loop/RealClock.h"
#include "platform/orb/loop/SimulatedClock.h"
#include "platform/orb/value/Error.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <unistd.h>

#include <gtest/gtest.h>

namespace {

class Waiter : public Orb::Clock::NotifieeConst {
  public:
    Waiter(const Orb::Ptr<Orb::SimulatedClock>& clock, double time,
           std::function<void(Waiter&)> action)
        : action_(std::move(action)) {
        notifierIs(clock);
        timeMinIs(time);
    }
    void onTimeMin() override {
        const auto action = action_; // the reactor may go while it runs
        action(*this);
    }

  private:
    std::function<void(Waiter&)> action_;
};

class ClockTest : public testing::Test {
  protected:
    Waiter* wait(
        double time, char name, std::function<void(Waiter&)> action = [](Waiter&) {}) {
        waiters_.push_back(std::make_unique<Waiter>(
            clock_, time, [this, name, action = std::move(action)](Waiter& waiter) {
                log_ += name;
                action(waiter);
            }));
        return waiters_.back().get();
    }
    std::string runUntil(double time) {
        manager_.runUntil(time);
        return std::exchange(log_, "");
    }

    Orb::Ptr<Orb::SimulatedClock> clock_ = Orb::makePtr<Orb::SimulatedClock>();
    Orb::ActivityManager manager_{clock_};
    std::vector<std::unique_ptr<Waiter>> waiters_;
    std::string log_;
};

TEST_F(ClockTest, EqualTimesFireInArmingOrder) {
    wait(5, 'c');
    Waiter* again = wait(3, 'b');
    wait(3, 'a');
    again->timeMinIs(4);
    again->timeMinIs(3);
    EXPECT_EQ(runUntil(10), "abc");
    EXPECT_EQ(clock_->nextWakeup(), Orb::Clock::never) << "each fires once";
}

TEST_F(ClockTest, ReactorRearmedForThePastStarvesNobody) {
    wait(2, 'x', [](Waiter& waiter) { waiter.timeMinIs(0.5); });
    wait(2, 'y');
    clock_->nowIs(3);
    EXPECT_EQ(clock_->runDue(), 2U);
    EXPECT_EQ(clock_->runDue(), 1U);
    wait(1.5, 'z');
    clock_->runDue();
    EXPECT_EQ(log_, "xyxxz");
}

TEST_F(ClockTest, ReactorMayDestroyItselfAndOthers) {
    wait(2, 'a', [this](Waiter&) { waiters_.erase(waiters_.begin()); });
    wait(2, 'b', [this](Waiter&) { waiters_.clear(); });
    wait(2, 'c');
    EXPECT_EQ(runUntil(5), "ab");
}

TEST_F(ClockTest, ReactorMayRepointItselfWhileItRuns) {
    const auto other = Orb::makePtr<Orb::SimulatedClock>();
    Waiter* waiter = wait(2, 'a', [&other](Waiter& self) {
        self.timeMinIs(7);
        self.notifierIs(other);
    });
    EXPECT_EQ(runUntil(10), "a");
    EXPECT_EQ(other->nextWakeup(), 7);
    waiter->notifierIs(nullptr);
    EXPECT_EQ(other->nextWakeup(), Orb::Clock::never);
}

TEST_F(ClockTest, ReactorOfADyingOwnerIsNotCalledAndAnotherMayDropItsOwner) {
    struct Owner : Orb::PtrInterface {
        explicit Owner(std::function<void()> action) : wakeup(this, std::move(action)) {}
        struct Wakeup : Orb::Clock::NotifieeConst {
            Wakeup(Owner* its, std::function<void()> what) : owner(its), action(std::move(what)) {}
            void onTimeMin() override { action(); }
            const Orb::PtrInterface* keeper() const override { return owner; }
            Owner* owner;
            std::function<void()> action;
        } wakeup;
    };
    std::vector<Orb::Ptr<Owner>> owners(2);
    for (Orb::Ptr<Owner>& owner : owners) {
        owner = Orb::makePtr<Owner>([this, &owner] {
            owner = nullptr;
            log_ += 'a';
        });
        owner->wakeup.notifierIs(clock_);
        owner->wakeup.timeMinIs(2);
    }
    owners[1]->orbDoZombieReactors(true);
    EXPECT_EQ(runUntil(3), "a");
    EXPECT_EQ(owners[0], nullptr);
    EXPECT_NE(owners[1], nullptr);
}

TEST_F(ClockTest, ThrowingReactorLeavesTheOthersArmed) {
    wait(2, 'a', [](Waiter&) { throw Orb::Error("bad"); });
    wait(2, 'b');
    EXPECT_THROW(manager_.runUntil(3), Orb::Error);
    EXPECT_EQ(runUntil(3), "ab");
}

TEST_F(ClockTest, TimeNeverFallsAndNeverIsZero) {
    EXPECT_THROW(clock_->nowIs(0.5), Orb::RangeError);
    EXPECT_THROW(clock_->nowIs(Orb::Clock::never), Orb::RangeError);
    EXPECT_GE(Orb::makePtr<Orb::RealClock>()->now(), 1);
}

TEST_F(ClockTest, RunawayIsStoppedAtTheLimit) {
    wait(2, 'a', [this](Waiter& self) { self.timeMinIs(clock_->now() + 1); });
    EXPECT_FALSE(manager_.runUntilIdle(10));
    EXPECT_EQ(log_, std::string(10, 'a'));
    waiters_.clear();
    EXPECT_TRUE(manager_.runUntilIdle(10));
}

class Reader : public Orb::FileDescriptorReactor {
  public:
    Reader(int descriptor, std::function<void()> action)
        : FileDescriptorReactor(descriptor), action_(std::move(action)) {}
    void onReadable() override {
        const auto action = action_; // the reactor may go while it runs
        action();
    }
    void onWritable() override { onReadable(); }

  private:
    std::function<void()> action_;
};

TEST(ActivityManager, DescriptorReactorsMayComeAndGoInsideCallbacks) {
    Orb::ActivityManager manager(Orb::makePtr<Orb::RealClock>());
    int pipe[2];
    ASSERT_EQ(::pipe(pipe), 0);
    std::vector<std::unique_ptr<Reader>> readers;
    int calls = 0;
    readers.reserve(3);
    for (int index = 0; index < 3; ++index) {
        readers.push_back(std::make_unique<Reader>(pipe[0], [&] {
            ++calls;
            readers.clear();
            readers.push_back(std::make_unique<Reader>(pipe[1], [&] { calls += 10; }));
            readers.back()->wantsWriteIs(true);
        }));
    }
    manager.runOnce(0);
    EXPECT_EQ(calls, 0) << "nothing to read yet";
    ASSERT_EQ(::write(pipe[1], "x", 1), 1);
    manager.runOnce(60);
    EXPECT_EQ(calls, 1) << "the others went before their turn, the new one waits for the next";
    manager.runOnce(60);
    EXPECT_EQ(calls, 11);
    readers.clear();
    ::close(pipe[0]);
    ::close(pipe[1]);
}

} // namespace
