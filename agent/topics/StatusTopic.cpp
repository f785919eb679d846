#include <algorithm>
#include <iterator>

#include "agent/topics/AgentControl.h"
#include "agent/topics/RouteWalk.h"
#include "agent/topics/RowTopic.h"
#include "agent/topics/StatusPrinter.h"
#include "directnet/root/ContainerSm.h"

namespace Agent {

namespace {

/// Counts the routes of each VRF, a few a step.
class StatusWalk {
  public:
    StatusWalk(const AgentView& view, const std::optional<L3::VrfName>& vrf)
        : control_(*view.control), walk_(view, vrf) {}

    bool step(const auto& sink) {
        if (isOver_) {
            return false;
        }
        if (!walk_.vrf() || !countSome()) {
            if (const auto* vrf = walk_.vrf()) {
                row_.vrf = vrf->vrfName().value();
                row_.ready = {vrf->vrfReadyStatus()->v4DirectNetsReady(),
                              vrf->vrfReadyStatus()->v6DirectNetsReady()};
                row_.backlog = vrf->intfBacklog()->backlog().size();
                sink(row_);
            }
            row_ = {};
            isOver_ = !walk_.nextVrf();
            if (isOver_) {
                sink(control_.status());
            }
        }
        return true;
    }

  private:
    static constexpr int routesAtOnce = 64;

    /// Returns false behind the VRF's last route.
    bool countSome() {
        for (int i = 0; i < routesAtOnce; ++i) {
            const auto route = walk_.nextRoute();
            if (!route) {
                return false;
            }
            const bool isIpv4 = route->key().prefix().af() == Lanx::AddressFamily::ipv4;
            (isIpv4 ? row_.ipv4 : row_.ipv6).add(route->routeType());
        }
        return true;
    }

    const AgentControl& control_;
    RouteWalk walk_;
    VrfStatusRow row_;
    bool isOver_ = false;
};

/// Collects a row's columns as rows of a table: heading and text.
class UprightColumns {
  public:
    template <typename T>
    void operator()(const Column& column, const T& value) {
        if (!isAbsent(value)) {
            append(std::string(column.heading), ValueForm<T>::text(value));
        }
    }
    template <typename Describe>
    void group(std::string_view, const Describe& describe) {
        describe(*this);
    }
    void append(std::string heading, std::string text) {
        TextTable::Row row{std::move(heading), std::move(text)};
        if (table) {
            table->rowIs(std::move(row));
        } else {
            table.emplace(std::move(row), std::vector<bool>{false, false});
        }
    }

    std::optional<TextTable> table;
};

class StatusTable final : public StatusPrinter {
  public:
    explicit StatusTable(std::ostream& out) : out_(out) {}

  private:
    void print(const std::vector<VrfStatusRow>& vrfs, const AgentStatusRow& agent) override {
        VrfStatusRow sum;
        const auto ready = std::ranges::count_if(
            vrfs, [](const VrfStatusRow& vrf) { return vrf.ready.ipv4 && vrf.ready.ipv6; });
        for (const VrfStatusRow& vrf : vrfs) {
            sum.backlog += vrf.backlog;
            sum.ipv4.add(vrf.ipv4);
            sum.ipv6.add(vrf.ipv6);
        }
        UprightColumns columns;
        AgentStatusRow::describe(agent, columns);
        columns.append("VRFs",
                       std::to_string(vrfs.size()) + ", " + std::to_string(ready) + " ready");
        columns.append("IPv4 routes", ValueForm<RouteCounts>::text(sum.ipv4));
        columns.append("IPv6 routes", ValueForm<RouteCounts>::text(sum.ipv6));
        columns.append("backlog", std::to_string(sum.backlog));
        columns.table->print(out_, "");
    }

    std::ostream& out_;
};

class StatusDocument final : public StatusPrinter {
  public:
    explicit StatusDocument(std::ostream& out) : out_(out) {}

  private:
    void print(const std::vector<VrfStatusRow>& vrfs, const AgentStatusRow& agent) override {
        std::string text;
        JsonWriter writer(text);
        writer.beginObject();
        AgentStatusRow::describe(agent, JsonColumns(writer));
        writer.key("vrfs");
        writer.beginObject();
        for (const VrfStatusRow& vrf : vrfs) {
            writer.key(vrf.vrf);
            writer.beginObject();
            VrfStatusRow::describeState(vrf, JsonColumns(writer));
            writer.endObject();
        }
        writer.endObject();
        writer.endObject();
        out_ << text << '\n';
    }

    std::ostream& out_;
};

std::unique_ptr<Answer> answerStatus(const AgentView& view, const std::optional<L3::VrfName>& vrf) {
    return std::make_unique<RowAnswer<StatusWalk>>(view, vrf);
}

} // namespace

void StatusPrinter::line(const JsonValue& object, std::string_view) {
    if (object.member("vrf").exists()) {
        vrfs_.push_back(readRow<VrfStatusRow>(object));
    } else {
        agent_ = readRow<AgentStatusRow>(object);
    }
}

extern const Topic statusTopic{
    "status", "how the agent is: version, uptime, what it holds, how its work goes",
    answerStatus,
    [](std::ostream& out, Colour) -> std::unique_ptr<AnswerPrinter> {
        return std::make_unique<StatusTable>(out);
    },
    [](std::ostream& out) -> std::unique_ptr<AnswerPrinter> {
        return std::make_unique<StatusDocument>(out);
    }};

extern const Topic metricsTopic{"metrics", "the same as OpenMetrics text", answerStatus,
                                [](std::ostream& out, Colour) { return printMetrics(out); },
                                printLines};

} // namespace Agent
