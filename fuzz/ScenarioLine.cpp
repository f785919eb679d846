#include <cstddef>
#include <cstdint>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>

#include "agent/device/DeviceInputs.h"
#include "agent/document/ScenarioLine.h"
#include "agent/patch/DocumentError.h"
#include "agent/replay/LineReader.h"
#include "platform/orb/loop/SimulatedClock.h"

namespace {

/// Whatever a scenario holds, a line is applied or refused with a DocumentError.
void applyLine(const std::string& text, std::optional<Agent::DeviceInputs>& inputs) {
    try {
        const Agent::ScenarioLine line = Agent::readScenarioLine(text);
        if (line.set) {
            inputs->apply(*line.set);
        }
    } catch (const Agent::DocumentError&) { // NOLINT(bugprone-empty-catch)
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::stringbuf text(std::string(reinterpret_cast<const char*>(data), size));
    const auto clock = Orb::makePtr<Orb::SimulatedClock>();
    std::optional<Agent::DeviceInputs> inputs;
    inputs.emplace(Orb::makePtr<Kiln::TaskScheduler>(clock), false);
    Agent::LineReader lines(text);
    while (const std::optional<std::string> line = lines.next()) {
        applyLine(*line, inputs);
    }
    return 0;
}
