#pragma once

#include <string>
#include <string_view>

#include "agent/topics/RouteFilter.h"
#include "platform/vrf/VrfName.h"

namespace Agent {

/// Picks the changes that one client watches out of the text that is the same for all.
class ChangeFilter {
  public:
    /// Lets everything through.
    ChangeFilter() = default;
    ChangeFilter(std::optional<L3::VrfName> vrf, RouteFilter routes)
        : vrf_(std::move(vrf)), routes_(std::move(routes)) {}

    /// Appends what is wanted of the next piece of the text; of a line that the piece ends in, when
    /// its end has come.
    void append(std::string& out, std::string_view piece);

  private:
    bool admits(std::string_view line) const;

    std::optional<L3::VrfName> vrf_;
    RouteFilter routes_;
    std::string begun_; // of a line
};

} // namespace Agent
