#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "agent/patch/DevicePatch.h"

namespace Agent {

/// One line of a scenario: at a time, a patch of the device document or a look at the state.
struct ScenarioLine {
    /// Latest time that a line may name: 31 years, at which microseconds still tell.
    static constexpr double latest = 1e9;

    std::optional<double>
        at; // seconds since the agent's start; without it the time of the line before
    /// With set: the patch is held until that many changes of the output tables have happened, and
    /// applied from inside the notification of the last of them.
    std::optional<std::uint64_t> during;
    std::optional<DevicePatch> set;
    std::optional<std::string> show; // the label; exactly one of set and show is there
};

/// Reads a line's JSON. Throws DocumentError.
ScenarioLine readScenarioLine(std::string_view text);

} // namespace Agent
