#include "agent/topics/RowTopic.h"
#include "platform/ringlog/TraceHandle.h"

namespace Agent {

namespace {

struct TraceRow {
    int level = -1; // -1 while it is off

    static void describe(auto& row, auto&& column) { column({"trace", "TRACE"}, row.level); }
};

/// Has one row.
class TraceWalk {
  public:
    TraceWalk(const AgentView&, const std::optional<L3::VrfName>&) {}

    bool step(const auto& sink) {
        if (isDone_) {
            return false;
        }
        TraceRow row{9};
        while (row.level >= 0 && !Ringlog::TraceHandle::anyEnabled(row.level)) {
            --row.level;
        }
        sink(row);
        isDone_ = true;
        return true;
    }

  private:
    bool isDone_ = false;
};

} // namespace

extern const Topic traceTopic =
    rowTopic<TraceRow, TraceWalk>("trace", "the level of the text trace, -1 while it is off");

} // namespace Agent
