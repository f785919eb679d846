#pragma once

#include <optional>
#include <vector>

#include "agent/explain/IntfSection.h"
#include "agent/explain/PrefixRows.h"

namespace Agent {

/// Walks the addresses that would contribute to a prefix, or to any that an address is in, and do
/// not. In pieces: it looks at every address that there is.
class CandidateWalk {
  public:
    struct Asked {
        Lanx::IpGenPrefix prefix;
        bool isAddress = false; ///< that alone, in whatever prefix
        std::optional<L3::VrfName> vrf;
    };

    CandidateWalk(const AgentView& view, Asked asked);

    /// Appends the next CandidateRow, or nothing this time. Returns false behind the last.
    bool step(std::string& out);

  private:
    AgentView view_;
    Asked asked_;
    std::vector<Lanx::IntfId> intfs_;          // still to come, the next one last
    std::vector<IntfSection::Options> places_; // of the present one
    std::optional<IntfSection> section_;
};

} // namespace Agent
