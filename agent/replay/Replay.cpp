#include "agent/replay/Replay.h"

#include <utility>

#include "agent/base/Errors.h"
#include "agent/document/JsonLines.h"
#include "agent/patch/DocumentError.h"
#include "agent/topics/StateWalk.h"
#include "platform/orb/value/Error.h"

namespace Agent {

namespace {

constexpr std::string_view blanks = " \t\r";

void applyPatch(DeviceInputs& inputs, const DevicePatch& patch) {
    try {
        inputs.apply(patch);
    } catch (const DocumentError& error) {
        throw error.within("/set");
    }
}

} // namespace

/// Says of an error where in the scenario it lies.
template <typename Work>
auto Replay::namingErrors(const Line& line, const Work& work) {
    const auto where = [&] { return name_ + ':' + std::to_string(line.number) + ':'; };
    try {
        return work();
    } catch (const DocumentError& error) {
        const std::string& pointer = error.pointer();
        throw BadInputError(where() + std::to_string(placeOf(line.text, error).column) + ": "
                            + (pointer.empty() ? "" : pointer + ": ") + error.what());
    } catch (const Orb::Error& error) {
        throw FailureError(where() + ' ' + error.what());
    }
}

Replay::Replay(std::string name, std::streambuf& scenario, StatePrinter& printer)
    : name_(std::move(name)), lines_(scenario), printer_(printer),
      clock_(Orb::makePtr<Orb::SimulatedClock>()), startTime_(clock_->now()),
      activityManager_(clock_) {}

void Replay::run() {
    while (namingErrors(line_, [this] { return runNextLine(); })) {
    }
    if (!root_) {
        start(false);
    }
    runUntilIdle();
    applyHeld();
    runUntilIdle();
    print({});
}

void Replay::reportFullTables(const RoomReport::Report& report) const {
    RoomReport().check(**root_, clock_->now(), report);
}

void Replay::runUntilIdle() {
    if (!activityManager_.runUntilIdle(maxAfterLastLine)) {
        print({});
        throw FailureError(name_ + ": still busy " + std::to_string(maxAfterLastLine)
                           + " simulated seconds after the last line");
    }
}

bool Replay::runNextLine() {
    line_ = {lines_.number() + 1};
    std::optional<std::string> text = lines_.next();
    if (!text) {
        return false;
    }
    line_.text = *std::move(text);
    if (line_.text.find_first_not_of(blanks) != std::string::npos) {
        apply(readScenarioLine(line_.text));
    }
    return true;
}

void Replay::apply(const ScenarioLine& line) {
    if (line.at) {
        if (*line.at < at_) {
            throw DocumentError("/at", "is earlier than the line before");
        }
        at_ = *line.at;
    }
    if (!root_) {
        start(line.set && after<&DevicePatch::gracefulRestart>(*line.set, std::nullopt));
    }
    if (line.at) {
        activityManager_.runUntil(startTime_ + at_);
    }
    if (line.show || line.during) {
        applyHeld();
    }
    if (line.show) {
        print(line.show);
    } else if (line.during) {
        hold(*line.during, *line.set);
    } else {
        applyPatch(*inputs_, *line.set);
    }
}

void Replay::hold(std::uint64_t changes, const DevicePatch& patch) {
    held_.emplace(Held{line_, patch});
    changes_->callAt(changes, [this] { applyHeld(); });
}

void Replay::applyHeld() {
    if (!held_) {
        return;
    }
    changes_->cancel();
    const Held held = *std::exchange(held_, std::nullopt);
    namingErrors(held.line, [&] { applyPatch(*inputs_, held.patch); });
}

void Replay::start(bool gracefulRestart) {
    inputs_.emplace(Orb::makePtr<Kiln::TaskScheduler>(clock_), gracefulRestart);
    root_.emplace(*inputs_);
    changes_.emplace(**root_, *inputs_->viaSetConfig());
    if (onStart_) {
        onStart_(**root_);
    }
}

void Replay::print(const std::optional<std::string>& label) {
    printState(printer_, {**root_, *inputs_, *clock_}, label);
}

} // namespace Agent
