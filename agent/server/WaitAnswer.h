#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "agent/document/JsonWriter.h"
#include "agent/topics/AgentControl.h"
#include "agent/topics/Answer.h"

namespace Agent {

/// Waits until VRFs are ready, see AgentControl::notReady(): {"notReady":["red","blue"]} whenever
/// these are others, and the end once there are none.
class WaitAnswer final : public Answer {
  public:
    WaitAnswer(const AgentControl& control, std::vector<L3::VrfName> vrfs)
        : control_(control), vrfs_(std::move(vrfs)) {}

    bool isWaiting() const override { return told_ && told_ == control_.notReady(vrfs_); }

    bool appendNext(std::string& out) override {
        told_ = control_.notReady(vrfs_);
        if (told_->empty()) {
            return false;
        }
        JsonWriter writer(out);
        writer.beginObject();
        writer.key("notReady");
        writer.beginArray();
        for (const L3::VrfName& vrf : *told_) {
            writer.value(vrf.value());
        }
        writer.endArray();
        writer.endObject();
        out += '\n';
        return true;
    }

  private:
    const AgentControl& control_;
    std::vector<L3::VrfName> vrfs_;
    std::optional<std::vector<L3::VrfName>> told_;
};

} // namespace Agent
