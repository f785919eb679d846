#pragma once

#include <memory>
#include <optional>
#include <string>

#include "agent/server/AgentView.h"
#include "agent/server/Request.h"

namespace Agent {

/// The answer to a request, made line by line while the agent goes on working: each line is a JSON
/// object and tells what is so when it is made.
class Answer {
  public:
    virtual ~Answer() = default;

    /// Appends the next line, or nothing this time. Returns false at the end of the answer.
    virtual bool appendNext(std::string& out) = 0;
};

/// The answer to one of the topics that can be shown, or the state that a watch begins with. The
/// view must outlive it. Throws DocumentError if the request's VRF does not exist.
std::unique_ptr<Answer> makeAnswer(const AgentView& view, const Request& request);

} // namespace Agent
