#pragma once

#include "agent/topics/AgentView.h"
#include "agent/topics/Row.h"
#include "agent/topics/Topic.h"

namespace Agent {

/// The answer of a walk over rows: each as JSON on a line.
template <typename Walk>
class RowAnswer final : public Answer {
  public:
    RowAnswer(const AgentView& view, const std::optional<L3::VrfName>& vrf) : walk_(view, vrf) {}

    bool appendNext(std::string& out) override {
        return walk_.step([&out](const auto& row) { appendJsonLine(out, row); });
    }

  private:
    Walk walk_;
};

/// Prints an answer as one table.
template <typename Row>
class RowTablePrinter final : public AnswerPrinter {
  public:
    explicit RowTablePrinter(std::ostream& out) : out_(out) {}

    void line(const JsonValue& object, std::string_view) override {
        table_.append(readRow<Row>(object));
    }
    void end() override { table_.print(out_, ""); }

  private:
    std::ostream& out_;
    RowTable<Row> table_;
};

template <typename Row>
std::unique_ptr<AnswerPrinter> printTable(std::ostream& out, Colour) {
    return std::make_unique<RowTablePrinter<Row>>(out);
}

/// A topic that is one table. Walk(view, vrf) walks over its rows, a few a step, while the agent
/// works: step(sink) hands the next ones to `sink`, or none this time, and returns false behind the
/// last.
template <typename Row, typename Walk>
constexpr Topic rowTopic(std::string_view name, std::string_view help) {
    return {name, help,
            [](const AgentView& view, const std::optional<L3::VrfName>& vrf)
                -> std::unique_ptr<Answer> { return std::make_unique<RowAnswer<Walk>>(view, vrf); },
            printTable<Row>, printLines};
}

} // namespace Agent
