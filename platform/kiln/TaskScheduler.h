#pragma once

#include <cstdint>
#include <functional>
#include <list>

#include "platform/orb/loop/Clock.h"
#include "platform/orb/object/Ptr.h"
#include "platform/orb/object/PtrInterface.h"

namespace Kiln {

class Task;

/// What a task has done since its present run began.
struct TaskRun {
    double started = 0;          ///< clock time
    std::uint64_t checks = 0;    ///< times it asked whether to yield, this one included
    std::uint64_t workCount = 0; ///< units of work it reported
};

/// Runs tasks in turn, one run per wake-up of its clock, so that other wake-ups get their turn
/// between two runs. A task that schedules itself again goes behind all that wait.
class TaskScheduler : public Orb::PtrInterface {
  public:
    /// Whether a task should yield now.
    using YieldPolicy = std::function<bool(const TaskRun&)>;

    explicit TaskScheduler(Orb::Ptr<Orb::Clock> clock);

    const Orb::Ptr<Orb::Clock>& clock() const { return clock_; }

    /// Seconds after which a run should yield, under the policy that is there at first.
    double runQuantum() const { return runQuantum_; }
    void runQuantumIs(double seconds) { runQuantum_ = seconds; }

    /// Replaces the policy; an empty one restores the one that goes by runQuantum().
    void yieldPolicyIs(YieldPolicy policy) { yieldPolicy_ = std::move(policy); }

  private:
    friend class Task;

    class Wakeup : public Orb::Clock::NotifieeConst {
      public:
        explicit Wakeup(TaskScheduler* owner) : owner_(owner) {}
        void onTimeMin() override { owner_->runNext(); }

      protected:
        const Orb::PtrInterface* keeper() const override { return owner_; }

      private:
        TaskScheduler* owner_;
    };

    using Queue = std::list<Task*>;

    Queue::iterator enqueue(Task& task);
    void dequeue(Queue::iterator place);
    bool shouldYield(const TaskRun& run) const;
    void runNext();

    Orb::Ptr<Orb::Clock> clock_;
    double runQuantum_ = 0.02;
    YieldPolicy yieldPolicy_;
    Queue pending_;
    Wakeup wakeup_{this};
};

} // namespace Kiln
