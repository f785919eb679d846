#include "agent/topics/RowTopic.h"
#include "agent/topics/StatePrinter.h"
#include "agent/topics/StateWalk.h"

namespace Agent {

namespace {

/// The lines of a state: {"time":..}, for each VRF {"vrf":..} followed by its routes, {"prefix":..}
/// each, and in the end {"vias":..}.
class StateAnswer final : public Answer, private StateSink {
  public:
    StateAnswer(const AgentView& view, const std::optional<L3::VrfName>& vrf, bool withRoutes)
        : walk_(view, vrf, withRoutes) {}

    bool appendNext(std::string& out) override {
        out_ = &out;
        return walk_.step(*this);
    }

  private:
    void time(const TimeRow& row) override { appendJsonLine(*out_, row); }
    void vrf(const VrfRow& row) override { appendJsonLine(*out_, row); }
    void route(const RouteRow& row) override { appendJsonLine(*out_, row); }
    void totals(const TotalsRow& row) override { appendJsonLine(*out_, row); }

    StateWalk walk_;
    std::string* out_ = nullptr;
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

/// The VRFs of a state as one table.
class VrfTable final : public StateSink {
  public:
    explicit VrfTable(std::ostream& out) : out_(out) {}

  private:
    void time(const TimeRow&) override {}
    void vrf(const VrfRow& row) override { table_.append(row); }
    void route(const RouteRow&) override {}
    void totals(const TotalsRow&) override { table_.print(out_, ""); }

    std::ostream& out_;
    RowTable<VrfRow> table_;
};

template <bool withRoutes>
std::unique_ptr<Answer> answerState(const AgentView& view, const std::optional<L3::VrfName>& vrf) {
    return std::make_unique<StateAnswer>(view, vrf, withRoutes);
}

std::unique_ptr<AnswerPrinter> printStateTables(std::ostream& out, Colour colour) {
    return std::make_unique<StateReader>(makeStateTables(out, colour));
}

std::unique_ptr<AnswerPrinter> printStateDocument(std::ostream& out) {
    return std::make_unique<StateReader>(makeStateDocuments(out));
}

std::unique_ptr<AnswerPrinter> printVrfTable(std::ostream& out, Colour) {
    return std::make_unique<StateReader>(std::make_unique<VrfTable>(out));
}

} // namespace

extern const Topic routesTopic{"routes", "the routes of each VRF; as JSON the state document",
                               answerState<true>, printStateTables, printStateDocument};

extern const Topic vrfsTopic{"vrfs",
                             "the VRFs, whether they are ready and how many routes each has",
                             answerState<false>, printVrfTable, printLines};

} // namespace Agent
