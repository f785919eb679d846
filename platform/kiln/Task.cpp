#include "platform/kiln/Task.h"

#include <utility>

namespace Kiln {

Task::Task(Orb::Ptr<TaskScheduler> scheduler, std::string name)
    : scheduler_(std::move(scheduler)), name_(std::move(name)) {}

Task::~Task() { unschedule(); }

void Task::scheduleTask() {
    if (!scheduled()) {
        place_ = scheduler_->enqueue(*this);
    }
}

void Task::unschedule() {
    if (scheduled()) {
        scheduler_->dequeue(*std::exchange(place_, std::nullopt));
    }
}

bool Task::taskShouldYield() {
    if (!present_) {
        return false;
    }
    ++present_->checks;
    return scheduler_->shouldYield(*present_);
}

void Task::taskWorkCountInc(std::uint64_t units) {
    workCount_ += units;
    if (present_) {
        present_->workCount += units;
    }
}

void Task::run() {
    struct Ending {
        Task& task;
        ~Ending() { task.present_.reset(); }
    };
    const Ending ending{*this};
    present_ = TaskRun{scheduler_->clock()->now()};
    notify(Orb::firstAttributeId);
}

} // namespace Kiln
