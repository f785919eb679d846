#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/kiln/TaskScheduler.h"
#include "platform/orb/object/Entity.h"
#include "platform/orb/object/Notifiee.h"
#include "platform/orb/object/Ptr.h"

namespace Kiln {

/// Long work that is done in runs. Its reactors do the work: in onRun() they go on until they are
/// done or taskShouldYield(), in which case they remember where they stand and call scheduleTask().
///
/// Letting go of a task that waits for its run takes it out of the queue; one that runs lives
/// until its run ends.
class Task : public Orb::Entity {
  public:
    class NotifieeConst;

    Task(Orb::Ptr<TaskScheduler> scheduler, std::string name);
    ~Task() override;

    const std::string& name() const { return name_; }

    /// Asks for a run; once is enough until that run begins. Allowed during a run.
    void scheduleTask();
    bool scheduled() const { return place_.has_value(); }

    /// Whether the present run has gone on for long enough. False outside a run.
    bool taskShouldYield();

    /// Reports units of work done.
    void taskWorkCountInc(std::uint64_t units);
    std::uint64_t taskWorkCount() const { return workCount_; }

  private:
    friend class TaskScheduler;

    void unschedule();
    void run();

    Orb::Ptr<TaskScheduler> scheduler_;
    std::string name_;
    std::optional<TaskScheduler::Queue::iterator> place_;
    std::optional<TaskRun> present_; ///< while it runs
    std::uint64_t workCount_ = 0;
};

/// Does a task's work. As every reactor it may come and go during a run.
class Task::NotifieeConst : public Orb::NotifieeOf<Task> {
  public:
    NotifieeConst() { hasNotificationActiveIs(true); }

    virtual void onRun() = 0;

    void onAttribute(Orb::AttributeId, const void*) final { onRun(); }
};

} // namespace Kiln
