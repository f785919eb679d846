#include "platform/kiln/TaskScheduler.h"

#include <utility>

#include "platform/kiln/Task.h"

namespace Kiln {

TaskScheduler::TaskScheduler(Orb::Ptr<Orb::Clock> clock) : clock_(std::move(clock)) {
    wakeup_.notifierIs(clock_);
}

TaskScheduler::Queue::iterator TaskScheduler::enqueue(Task& task) {
    const auto place = pending_.insert(pending_.end(), &task);
    if (wakeup_.timeMin() == Orb::Clock::never) {
        wakeup_.timeMinIs(clock_->now());
    }
    return place;
}

void TaskScheduler::dequeue(Queue::iterator place) {
    pending_.erase(place);
    if (pending_.empty()) {
        wakeup_.timeMinIs(Orb::Clock::never);
    }
}

bool TaskScheduler::shouldYield(const TaskRun& run) const {
    return yieldPolicy_ ? yieldPolicy_(run) : clock_->now() - run.started >= runQuantum_;
}

void TaskScheduler::runNext() {
    const Orb::Ptr<Task> task(pending_.front());
    task->unschedule();
    if (!pending_.empty()) {
        wakeup_.timeMinIs(clock_->now());
    }
    task->run();
}

} // namespace Kiln
