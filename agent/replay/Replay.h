#pragma once

#include <functional>
#include <optional>
#include <string>

#include "agent/device/AgentRoot.h"
#include "agent/device/DeviceInputs.h"
#include "agent/device/RoomReport.h"
#include "agent/document/ScenarioLine.h"
#include "agent/replay/ChangeCounter.h"
#include "agent/replay/LineReader.h"
#include "agent/topics/StatePrinter.h"
#include "platform/orb/loop/ActivityManager.h"
#include "platform/orb/loop/SimulatedClock.h"

namespace Agent {

/// Runs a scenario on simulated time. Between two lines the agent runs until the later one's time,
/// whatever is due at that time included; lines without a time, and those of one burst, follow each
/// other with nothing in between. After the last line it runs until nothing is pending, and its
/// final state is printed.
///
/// A patch that is to be applied during a change is held until then; one at most. If the change has
/// not come by the next such line, a look at the state or the end, it is applied like any other.
class Replay {
  public:
    /// Seconds for which a replay goes on after its last line before it is given up.
    static constexpr int maxAfterLastLine = 3600;

    /// `name` is what messages call the scenario.
    Replay(std::string name, std::streambuf& scenario, StatePrinter& printer);
    Replay(const Replay&) = delete;
    Replay& operator=(const Replay&) = delete;
    ~Replay() = default;

    /// Called once, when the root has been made and nothing has been applied yet.
    using OnStart = std::function<void(const AgentRoot::RootSm&)>;
    void onStartIs(OnStart onStart) { onStart_ = std::move(onStart); }

    /// Throws BadInputError for a line that is refused, of which nothing is applied then;
    /// FailureError when the agent fails at a line or does not come to rest.
    void run();

    /// Says which VRFs did not fit into the tables at the end.
    void reportFullTables(const RoomReport::Report& report) const;

  private:
    struct Line {
        std::size_t number = 0;
        std::string text{};
    };
    struct Held {
        Line line; ///< for messages
        DevicePatch patch;
    };

    bool runNextLine();
    void apply(const ScenarioLine& line);
    void hold(std::uint64_t changes, const DevicePatch& patch);
    void applyHeld();
    void runUntilIdle();
    void start(bool gracefulRestart);
    void print(const std::optional<std::string>& label);
    template <typename Work>
    auto namingErrors(const Line& line, const Work& work);

    std::string name_;
    LineReader lines_;
    Line line_; // the present one
    StatePrinter& printer_;
    OnStart onStart_;
    double at_ = 0; // of the last line that named a time

    Orb::Ptr<Orb::SimulatedClock> clock_;
    double startTime_;
    Orb::ActivityManager activityManager_;
    // Made for the first line that is applied: only then is it known whether this is a graceful
    // restart.
    std::optional<DeviceInputs> inputs_;
    std::optional<AgentRoot> root_;
    std::optional<Held> held_;
    std::optional<ChangeCounter> changes_;
};

} // namespace Agent
