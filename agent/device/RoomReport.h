#pragma once

#include <functional>
#include <map>
#include <string>

#include "directnet/root/RootSm.h"

namespace Agent {

/// Says of each VRF, once while it lasts, that the tables have no room for all that it has. What
/// waits is tried again now and then, and does not wait meanwhile: that is not the end of it.
class RoomReport {
  public:
    using Report = std::function<void(const std::string& message)>;

    /// `now` are the seconds of the agent's clock.
    void check(const Routing::DirectNet::RootSm& root, double now, const Report& report);

  private:
    static constexpr double pause = 5; // seconds without waiting after which it is over

    std::map<L3::VrfName, double> waiting_; // when each was seen to wait last
};

} // namespace Agent
