#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include <directnet/tables.hpp>

#include "agent/topics/ChangeRow.h"

namespace Agent {

/// Follows the routes in the tables, by the names of their VRFs. A VRF that gets another id or name
/// takes its routes along: those under the old name go, those under the new one come. Routes of an
/// id without a VRF wait for it.
class RouteFollower {
  public:
    using Listener = std::function<void(const ChangeRow& row)>;

    RouteFollower(directnet::Tables& tables, Listener listener)
        : tables_(tables), listener_(std::move(listener)) {}

    /// Brings the tables to the present and tells what has changed; the first time what is there.
    /// Throws directnet::TablesError for a table that cannot be read, when the others have been
    /// told of.
    void update();

  private:
    using VrfId = std::uint32_t;
    /// An id that stands for another VRF than before.
    struct Renamed {
        std::string before;                    // empty for none
        std::set<Lanx::IpGenPrefix> changed{}; // in the present update
    };

    void handleVrf(const directnet_vrf& vrf);
    void handleRoute(const directnet_route* before, const directnet_route* after);
    void finish();
    void tellGone(const std::string& vrf, const Lanx::IpGenPrefix& prefix);
    void tell(ChangeKind kind, const std::string& vrf, const directnet_route& route);
    ClockTime time();

    directnet::Tables& tables_;
    Listener listener_;
    bool isFirst_ = true;
    std::optional<ClockTime> time_;      // of the present update, once it is known
    std::map<VrfId, std::string> names_; // of each id, as its routes were told
    std::set<VrfId> nameless_;           // ids that have routes and no name
    std::map<VrfId, Renamed> renamed_;   // in the present update
};

} // namespace Agent
