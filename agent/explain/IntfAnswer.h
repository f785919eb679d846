#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "agent/explain/IntfSection.h"
#include "agent/topics/Answer.h"

namespace Agent {

/// Explains the interface of a name, VRF by VRF: an IntfSection for each that it is in or has a
/// virtual address in. Of one VRF, of which anything must be known: if it is in others only, these,
/// with the word that they are not what was asked for. There are no lines where no VRF has an
/// interface of that name.
class IntfAnswer final : public Answer {
  public:
    IntfAnswer(const AgentView& view, std::string_view name, const std::optional<L3::VrfName>& vrf);

    bool appendNext(std::string& out) override;

  private:
    AgentView view_;
    std::vector<IntfSection::Options> sections_; // still to come, the next one last
    std::optional<IntfSection> section_;
};

} // namespace Agent
