#pragma once

#include <memory>
#include <ostream>
#include <vector>

#include "agent/topics/AnswerPrinter.h"
#include "agent/topics/StatusRows.h"

namespace Agent {

/// Reads the lines of a status, and prints it once it is complete.
class StatusPrinter : public AnswerPrinter {
  public:
    void line(const JsonValue& object, std::string_view text) final;
    void end() final { print(vrfs_, agent_); }

  private:
    virtual void print(const std::vector<VrfStatusRow>& vrfs, const AgentStatusRow& agent) = 0;

    std::vector<VrfStatusRow> vrfs_;
    AgentStatusRow agent_;
};

/// Prints OpenMetrics text.
std::unique_ptr<AnswerPrinter> printMetrics(std::ostream& out);

} // namespace Agent
