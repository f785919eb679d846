#pragma once

#include <string>

namespace Agent {

/// What a client is told, made line by line while the agent goes on working: each line is a JSON
/// object and tells what is so when it is made.
class Answer {
  public:
    virtual ~Answer() = default;

    /// Appends the next lines, or nothing this time; few of them, as the agent waits meanwhile.
    /// Returns false at the end of the answer.
    virtual bool appendNext(std::string& out) = 0;
};

} // namespace Agent
