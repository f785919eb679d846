#pragma once

#include "agent/server/Answer.h"

namespace Agent {

/// The level of the text trace, -1 when it is off: {"trace":LEVEL}.
class TraceAnswer : public Answer {
  public:
    bool appendNext(std::string& out) override;

  private:
    bool done_ = false;
};

} // namespace Agent
