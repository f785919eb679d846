#include "platform/kiln/Task.h"
#include "platform/kiln/TaskScheduler.h"
#include "platform/kiln/TimerWheel.h"
#include "platform/orb/loop/ActivityManager.h"
#include "platform/orb/loop/SimulatedClock.h"
#include "platform/orb/value/Error.h"

#include <cmath>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Kiln::Task;
using Kiln::TaskRun;
using Kiln::TimerWheel;

class Worker : public Task::NotifieeConst {
  public:
    Worker(const Orb::Ptr<Task>& task, std::function<void(Task&)> work)
        : task_(task), work_(std::move(work)) {
        notifierIs(task);
    }
    void onRun() override { work_(*task_); }

  private:
    Orb::Ptr<Task> task_;
    std::function<void(Task&)> work_;
};

class TaskTest : public testing::Test {
  protected:
    /// A task that does `units` of work, a tenth of a second each, as often as it is scheduled.
    Orb::Ptr<Task> work(char name, int units) {
        auto left = std::make_shared<int>(units);
        return start(name, [this, name, left](Task& task) {
            while (*left > 0) {
                --*left;
                log_ += name;
                task.taskWorkCountInc(1);
                clock_->nowIs(clock_->now() + 0.1);
                if (task.taskShouldYield() && *left > 0) {
                    task.scheduleTask();
                    return;
                }
            }
        });
    }
    Orb::Ptr<Task> start(char name, std::function<void(Task&)> action) {
        auto task = Orb::makePtr<Task>(scheduler_, std::string(1, name));
        workers_.push_back(Orb::makePtr<Worker>(task, std::move(action)));
        task->scheduleTask();
        return task;
    }
    std::string run() {
        EXPECT_TRUE(manager_.runUntilIdle());
        return std::exchange(log_, "");
    }

    Orb::Ptr<Orb::SimulatedClock> clock_ = Orb::makePtr<Orb::SimulatedClock>();
    Orb::ActivityManager manager_{clock_};
    Orb::Ptr<Kiln::TaskScheduler> scheduler_ = Orb::makePtr<Kiln::TaskScheduler>(clock_);
    std::vector<Orb::Ptr<Worker>> workers_;
    std::string log_;
};

TEST_F(TaskTest, LongTasksTakeTurnsByTimeChecksOrWork) {
    const std::pair<Kiln::TaskScheduler::YieldPolicy, std::string> cases[] = {
        {nullptr, "aabbaaba"}, // by the quantum
        {[](const TaskRun&) { return true; }, "abababaa"},
        {[](const TaskRun& run) { return run.workCount >= 2; }, "aabbaaba"},
        {[](const TaskRun& run) { return run.checks >= 3; }, "aaabbbaa"},
        {[](const TaskRun&) { return false; }, "aaaaabbb"},
    };
    scheduler_->runQuantumIs(0.15);
    for (const auto& [policy, expected] : cases) {
        scheduler_->yieldPolicyIs(policy);
        const auto a = work('a', 5);
        const auto b = work('b', 3);
        EXPECT_EQ(run(), expected);
        EXPECT_EQ(a->taskWorkCount() + b->taskWorkCount(), 8U);
    }
}

TEST_F(TaskTest, OtherWakeupsGetATurnBetweenTwoRuns) {
    struct Tick : Orb::Clock::NotifieeConst {
        explicit Tick(std::string& out) : log(out) {}
        void onTimeMin() override {
            log += '.';
            if (log.size() < 12) {
                timeMinIs(notifier()->now());
            }
        }
        std::string& log;
    } tick(log_);
    tick.notifierIs(clock_);
    tick.timeMinIs(1);
    scheduler_->yieldPolicyIs([](const TaskRun&) { return true; });
    work('a', 3);
    work('b', 3);
    EXPECT_EQ(run().substr(0, 12), ".a.b.a.b.a.b");
}

TEST_F(TaskTest, SchedulingTwiceRunsOnce) {
    const auto task = start('a', [this](Task&) { log_ += 'a'; });
    task->scheduleTask();
    EXPECT_EQ(run(), "a");
    EXPECT_FALSE(task->taskShouldYield()) << "it does not run";
}

TEST_F(TaskTest, PendingOrRunningTaskMayBeDestroyed) {
    start('a', [this](Task& task) {
        log_ += 'a';
        task.scheduleTask();
        workers_.clear(); // the last references to all three
        task.taskShouldYield();
    });
    start('b', [this](Task&) { log_ += 'b'; });
    start('c', [this](Task&) { log_ += 'c'; });
    EXPECT_EQ(run(), "a");
}

TEST_F(TaskTest, ThrowingTaskStopsNoOther) {
    start('a', [](Task&) { throw Orb::Error("bad"); });
    start('b', [this](Task&) { log_ += 'b'; });
    EXPECT_THROW(manager_.runUntilIdle(), Orb::Error);
    EXPECT_EQ(run(), "b");
}

class TimerWheelTest : public testing::Test {
  protected:
    static constexpr double tick = 0.01;

    Orb::Ptr<TimerWheel> makeWheel(std::uint32_t slots, std::uint32_t bucket) {
        return Orb::makePtr<TimerWheel>(TimerWheel::Arguments{clock_, 10U, slots, true, bucket});
    }
    TimerWheel::Timer* timer(
        char name, std::function<void()> action = [] {}) {
        timers_.push_back(
            std::make_unique<TimerWheel::Timer>([this, name, action = std::move(action)] {
                log_ += name;
                action();
            }));
        return timers_.back().get();
    }
    std::string run() {
        EXPECT_TRUE(manager_.runUntilIdle());
        return std::exchange(log_, "");
    }

    Orb::Ptr<Orb::SimulatedClock> clock_ = Orb::makePtr<Orb::SimulatedClock>();
    Orb::ActivityManager manager_{clock_};
    std::vector<std::unique_ptr<TimerWheel::Timer>> timers_;
    std::string log_;
};

TEST_F(TimerWheelTest, WheelAgreesWithASortedModelAcrossRounds) {
    const auto tickNow = [this] { return std::lround(clock_->now() / tick); };
    for (const auto& [slots, bucket] : {std::pair(1U, 1U), {7, 3}, {64, 64}, {1000, 128}}) {
        std::mt19937 random(slots);
        const auto wheel = makeWheel(slots, bucket);
        std::multimap<long, std::size_t> model; // tick -> timer; equal ones in scheduling order
        std::vector<std::pair<long, std::size_t>> fired;
        std::vector<std::unique_ptr<TimerWheel::Timer>> timers;
        for (std::size_t index = 0; index < 60; ++index) {
            timers.push_back(std::make_unique<TimerWheel::Timer>(
                [&fired, &tickNow, index] { fired.emplace_back(tickNow(), index); }));
        }
        for (int step = 0; step < 2000; ++step) {
            const std::size_t index = random() % timers.size();
            std::erase_if(model, [&](const auto& entry) { return entry.second == index; });
            if (random() % 4 == 0) {
                timers[index]->cancel();
            } else {
                const long at = tickNow() + static_cast<long>(random() % 400);
                const double part = static_cast<double>(random() % 10) / 10;
                wheel->schedule(*timers[index], (static_cast<double>(at) - part) * tick);
                model.emplace(std::max(at, tickNow() + 1), index);
            }
            ASSERT_EQ(wheel->pendingTimers(), model.size());
            if (random() % 3 == 0) {
                const long until = tickNow() + static_cast<long>(random() % 20);
                manager_.runUntil(static_cast<double>(until) * tick);
                const auto end = model.upper_bound(until);
                ASSERT_EQ(fired, (std::vector<std::pair<long, std::size_t>>(model.begin(), end)));
                model.erase(model.begin(), end);
                fired.clear();
            }
        }
    }
}

TEST_F(TimerWheelTest, LateWakeupFiresInOrderOfExpiryAcrossRounds) {
    const auto wheel = makeWheel(10, 4);
    wheel->schedule(*timer('c'), 1.35); // slot 5, later round
    wheel->schedule(*timer('a'), 1.05); // slot 5
    wheel->schedule(*timer('b'), 1.12);
    wheel->schedule(*timer('d'), 900);
    clock_->nowIs(100);
    clock_->runDue();
    EXPECT_EQ(log_, "abc");
    EXPECT_EQ(wheel->pendingTimers(), 1U);
    timers_.clear();
    EXPECT_EQ(clock_->nextWakeup(), Orb::Clock::never) << "nothing is left to wake for";
}

TEST_F(TimerWheelTest, CallbackMayCancelTimersOfTheSameTick) {
    const auto wheel = makeWheel(100, 10);
    wheel->schedule(*timer('a',
                           [this] {
                               timers_[1]->cancel();
                               timers_.erase(timers_.begin() + 2);
                           }),
                    2);
    for (const char name : {'b', 'c', 'd'}) {
        wheel->schedule(*timer(name), 2);
    }
    EXPECT_EQ(run(), "ad");
}

TEST_F(TimerWheelTest, TimerRescheduledForThePastFiresAtTheNextTickOnly) {
    const auto wheel = makeWheel(100, 10);
    int left = 3;
    TimerWheel::Timer* again = nullptr;
    again = timer('a', [&] {
        if (--left > 0) {
            wheel->schedule(*again, 0);
        }
    });
    wheel->schedule(*again, 0);
    wheel->schedule(*timer('b'), 1.02);
    EXPECT_EQ(run(), "abaa");
    EXPECT_NEAR(clock_->now(), 1.03, 1e-9);
}

TEST_F(TimerWheelTest, TimerAndWheelMayGoInsideTheCallback) {
    auto wheel = makeWheel(100, 10);
    TimerWheel* const raw = wheel.get();
    raw->schedule(*timer('a', [this] { timers_.erase(timers_.begin()); }), 2);
    raw->schedule(*timer('b', [&wheel] { wheel = nullptr; }), 2);
    raw->schedule(*timer('c'), 2);
    raw->schedule(*timer('d'), 3);
    EXPECT_EQ(run(), "ab");
    for (const auto& left : timers_) {
        EXPECT_FALSE(left->pending());
    }
}

TEST_F(TimerWheelTest, ThrowingCallbackStrandsNoOther) {
    const auto wheel = makeWheel(100, 10);
    wheel->schedule(*timer('a', [] { throw Orb::Error("bad"); }), 2);
    wheel->schedule(*timer('b'), 2);
    wheel->schedule(*timer('c'), 3);
    EXPECT_THROW(manager_.runUntilIdle(), Orb::Error);
    EXPECT_EQ(run(), "abc");
}

} // namespace
