#pragma once

#include <memory>
#include <optional>
#include <ostream>
#include <string>

#include "agent/base/Colour.h"
#include "agent/explain/ExplainTarget.h"
#include "agent/topics/AgentView.h"
#include "agent/topics/Answer.h"
#include "agent/topics/AnswerPrinter.h"
#include "platform/vrf/VrfName.h"

namespace Agent {

/// Says why: the answer of an agent that is asked to explain something, in one VRF or in all. The
/// VRF must be up, or, for an interface, known.
std::unique_ptr<Answer> explain(const AgentView& view, const ExplainTarget& target,
                                const std::optional<L3::VrfName>& vrf);

/// Print such answers as tables for people or as JSON, an object for each VRF on a line. `target`
/// is what was asked for: where there is no answer to that, end() throws FailureError.
std::unique_ptr<AnswerPrinter> printExplanation(std::ostream& out, Colour colour,
                                                std::string target);
std::unique_ptr<AnswerPrinter> printExplanationObjects(std::ostream& out, std::string target);

/// Prints a whole answer, as it is now.
void printAnswer(Answer& answer, AnswerPrinter& printer);

} // namespace Agent
