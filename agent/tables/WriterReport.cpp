#include "agent/tables/WriterReport.h"

#include "agent/base/WallTime.h"
#include "tables/layout/WallTime.h"

namespace Agent {

namespace {

/// Nanoseconds after which an agent that has not been heard of counts as stopped.
constexpr std::uint64_t patience = 3'000'000'000;

} // namespace

WriterReport::State WriterReport::stateOf(const directnet_writer& writer) {
    if (writer.present == 0) {
        return State::absent;
    }
    if (writer.lives == 0) {
        return State::ended;
    }
    return Tables::wallTime() > writer.heard_of_at + patience ? State::stopped : State::running;
}

void WriterReport::check(const directnet_writer& writer) {
    const State state = stateOf(writer);
    if (state == said_ && (state == State::running || writer.epoch == epoch_)) {
        return;
    }
    said_ = state;
    epoch_ = writer.epoch;
    const std::string agent = "the agent, process " + std::to_string(writer.pid) + ", ";
    switch (state) {
    case State::absent:
        report_("there is no agent yet");
        break;
    case State::stopped:
        report_(agent + "is stopped or busy, not heard of since "
                + wallTimeText(writer.heard_of_at));
        break;
    case State::ended:
        report_(agent + (writer.closed_at != 0 ? "has ended at " : "was killed at about ")
                + wallTimeText(writer.absent_since));
        break;
    case State::running:
        report_(agent + "is running");
        break;
    }
}

} // namespace Agent
