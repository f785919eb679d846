#pragma once

#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

#include "agent/base/Colour.h"
#include "agent/document/JsonReader.h"
#include "agent/topics/Answer.h"
#include "agent/topics/AnswerPrinter.h"
#include "platform/vrf/VrfName.h"

namespace Agent {

struct AgentView;

/// Something that a running agent can show: what it is called, how the agent answers and how a
/// client prints the answer.
struct Topic {
    std::string_view name;
    std::string_view help;

    /// Makes the agent's answer, about one VRF, which must exist, or about all.
    std::unique_ptr<Answer> (*answer)(const AgentView& view, const std::optional<L3::VrfName>& vrf);
    std::unique_ptr<AnswerPrinter> (*tables)(std::ostream& out, Colour colour);
    std::unique_ptr<AnswerPrinter> (*json)(std::ostream& out);
};

} // namespace Agent
