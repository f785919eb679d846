#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "agent/topics/AgentControl.h"
#include "agent/topics/Answer.h"

namespace Agent {

/// What was different in the configuration as it was read again, a row a line, and the end once
/// that has become routes.
class ReloadAnswer final : public Answer {
  public:
    explicit ReloadAnswer(AgentControl& control) : control_(control), rows_(control.reload()) {}

    bool isWaiting() const override { return next_ == rows_.size() && !control_.isQuiet(); }

    bool appendNext(std::string& out) override {
        if (next_ == rows_.size()) {
            return false;
        }
        appendJsonLine(out, rows_[next_]);
        ++next_;
        return true;
    }

  private:
    AgentControl& control_;
    std::vector<ConfigChangeRow> rows_;
    std::size_t next_ = 0;
};

} // namespace Agent
