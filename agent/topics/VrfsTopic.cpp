#include "agent/topics/RowTopic.h"
#include "agent/topics/StateWalk.h"
#include "agent/topics/VrfCatalog.h"
#include "directnet/root/RootSm.h"

namespace Agent {

namespace {

struct ListedVrfRow {
    VrfRow state; // of one that is not up only the name
    std::optional<std::size_t> id;
    NameOrNull netns;
    NameOrNull device;
    std::optional<std::string> obstacle; // why it is not up

    static void describe(auto& row, auto&& column) {
        column({"vrf", "VRF"}, row.state.vrf);
        column({"id", "ID"}, row.id);
        column({"netns", "NAMESPACE"}, row.netns);
        column({"device", "DEVICE"}, row.device);
        column({"ready", "READY"}, row.state.ready);
        column({"rib", "RIB"}, row.state.rib);
        column({"backlog", "BACKLOG"}, row.state.backlog);
        VrfRow::describeRoutes(row.state, column);
        column({"notUp", "NOT UP"}, row.obstacle);
    }
};

/// Walks the VRFs that were known at the start; each is shown as it is at its step.
class VrfWalk {
  public:
    VrfWalk(const AgentView& view, const std::optional<L3::VrfName>& vrf) : view_(view) {
        for (const KnownVrf& known : view.catalog->knownVrfs()) {
            if (!vrf || *vrf == known.name) {
                known_.push_back(known);
            }
        }
    }

    bool step(const auto& sink) {
        if (next_ == known_.size()) {
            return false;
        }
        sink(row(known_[next_]));
        ++next_;
        return true;
    }

  private:
    ListedVrfRow row(const KnownVrf& known) const;

    AgentView view_;
    std::vector<KnownVrf> known_;
    std::size_t next_ = 0;
};

ListedVrfRow VrfWalk::row(const KnownVrf& known) const {
    ListedVrfRow row;
    const auto* const container =
        known.obstacle.empty() ? view_.root.containerSm(known.name) : nullptr;
    if (container != nullptr) {
        row.state = vrfRow(view_, *container);
    } else {
        row.state.vrf = known.name.value();
        row.obstacle = known.obstacle.empty() ? "not active" : known.obstacle;
    }
    if (known.id) {
        row.id = known.id->value();
    }
    row.netns.name = known.netns ? known.netns->value() : std::string();
    row.device.name = known.device.name();
    return row;
}

} // namespace

extern const Topic vrfsTopic = rowTopic<ListedVrfRow, VrfWalk>(
    "vrfs", "every VRF that was asked for or seen, and why one is not up");

} // namespace Agent
