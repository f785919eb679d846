#include "agent/topics/RowTopic.h"
#include "agent/topics/StateLines.h"
#include "agent/topics/StatePrinter.h"
#include "agent/topics/StateWalk.h"
#include "agent/topics/Topics.h"

namespace Agent {

namespace {

class StateAnswer final : public Answer {
  public:
    StateAnswer(const AgentView& view, const std::optional<L3::VrfName>& vrf,
                const RouteFilter& filter)
        : walk_(view, vrf) {
        walk_.filterIs(filter);
    }

    bool appendNext(std::string& out) override {
        StateLines lines(out);
        return walk_.step(lines);
    }

  private:
    StateWalk walk_;
};

/// Reads the lines of a state.
class StateReader final : public AnswerPrinter {
  public:
    explicit StateReader(std::unique_ptr<StateSink> sink) : sink_(std::move(sink)) {}

    void line(const JsonValue& object, std::string_view) override {
        if (object.member("prefix").exists()) {
            sink_->route(readRow<RouteRow>(object));
        } else if (object.member("vrf").exists()) {
            sink_->vrf(readRow<VrfRow>(object));
        } else if (object.member("time").exists()) {
            sink_->time(readRow<TimeRow>(object));
        } else {
            sink_->totals(readRow<TotalsRow>(object));
        }
    }
    void end() override {}

  private:
    std::unique_ptr<StateSink> sink_;
};

std::unique_ptr<Answer> answerState(const AgentView& view, const std::optional<L3::VrfName>& vrf) {
    return answerRoutes(view, vrf, {});
}

std::unique_ptr<AnswerPrinter> printStateTables(std::ostream& out, Colour colour) {
    return std::make_unique<StateReader>(makeStateTables(out, colour));
}

std::unique_ptr<AnswerPrinter> printStateDocument(std::ostream& out) {
    return std::make_unique<StateReader>(makeStateDocuments(out));
}

} // namespace

std::unique_ptr<Answer> answerRoutes(const AgentView& view, const std::optional<L3::VrfName>& vrf,
                                     const RouteFilter& filter) {
    return std::make_unique<StateAnswer>(view, vrf, filter);
}

extern const Topic stateTopic{"routes", "the routes of each VRF; as JSON the state document",
                              answerState, printStateTables, printStateDocument};

} // namespace Agent
