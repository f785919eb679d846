#pragma once

#include <string>

namespace Agent {

/// An answer to a client, made line by line while the agent goes on working. Each line is a JSON
/// object and shows the state at the moment when the line is made.
class Answer {
  public:
    virtual ~Answer() = default;

    /// Appends the next lines, or nothing this time; few of them, as the agent waits meanwhile.
    /// Returns false at the end of the answer.
    virtual bool appendNext(std::string& out) = 0;

    /// Whether there is nothing to append until something happens in the agent. It is asked again
    /// after each turn of the event loop.
    virtual bool isWaiting() const { return false; }
};

} // namespace Agent
