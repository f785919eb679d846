#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>

#include <directnet/tables.hpp>

namespace Agent {

/// Says when the agent that writes the tables does not run, and since when; then when one runs
/// again.
class WriterReport {
  public:
    using Report = std::function<void(const std::string& message)>;

    explicit WriterReport(Report report) : report_(std::move(report)) {}

    /// Looks at the writer as it is now. What has been said is not said again.
    void check(const directnet_writer& writer);

  private:
    enum class State { running, absent, stopped, ended };

    static State stateOf(const directnet_writer& writer);

    Report report_;
    State said_ = State::running;
    std::uint64_t epoch_ = 0;
};

} // namespace Agent
