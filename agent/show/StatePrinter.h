#pragma once

#include <string>

#include "agent/show/StateView.h"

namespace Agent {

/// Prints states of the agent in some form.
class StatePrinter {
  public:
    virtual ~StatePrinter() = default;

    /// `label` names a state that was asked for; null for the final one. Throws FailureError when
    /// the output takes no more.
    virtual void print(const StateView& state, const std::string* label) = 0;
};

} // namespace Agent
