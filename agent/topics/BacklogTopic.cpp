#include "agent/topics/RowTopic.h"
#include "agent/topics/VrfCursor.h"
#include "directnet/backlog/IntfIdAndPrefix.h"
#include "directnet/root/ContainerSm.h"

namespace Agent {

namespace {

struct BacklogRow {
    std::string vrf;
    Lanx::IntfId intf;
    Lanx::IpGenPrefix prefix;

    static void describe(auto& row, auto&& column) {
        column({"vrf", "VRF"}, row.vrf);
        column({"intf", "INTF"}, row.intf);
        column({"prefix", "PREFIX"}, row.prefix);
    }
};

class BacklogWalk {
  public:
    BacklogWalk(const AgentView& view, const std::optional<L3::VrfName>& vrf) : vrfs_(view, vrf) {}

    bool step(const auto& sink) {
        if (const auto* vrf = vrfs_.vrf()) {
            const auto& backlog = vrf->intfBacklog()->backlog();
            if (const auto* entry = last_ ? backlog.after(*last_) : backlog.first()) {
                last_ = entry->key();
                sink(BacklogRow{vrf->vrfName().value(), last_->intfId(), last_->genPrefix()});
                return true;
            }
        }
        last_.reset();
        return vrfs_.advance();
    }

  private:
    VrfCursor vrfs_;
    std::optional<Routing::DirectNet::IntfIdAndPrefix> last_;
};

} // namespace

extern const Topic backlogTopic = rowTopic<BacklogRow, BacklogWalk>(
    "backlog", "the (interface, prefix) pairs whose routes wait to be written");

} // namespace Agent
