#pragma once

#include <functional>
#include <set>
#include <string>

#include "directnet/root/RootSm.h"

namespace Agent {

/// Says of each VRF, once while it lasts, that the tables have no room for all that it has.
class RoomReport {
  public:
    using Report = std::function<void(const std::string& message)>;

    void check(const Routing::DirectNet::RootSm& root, const Report& report);

  private:
    std::set<L3::VrfName> waiting_;
};

} // namespace Agent
