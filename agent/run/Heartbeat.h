#pragma once

#include <utility>

#include "platform/orb/loop/Clock.h"
#include "platform/vaultdb/Folder.h"

namespace Agent {

/// Lets the readers of a folder's tables know, once a second, that their writer runs.
class Heartbeat : private Orb::Clock::NotifieeConst {
  public:
    Heartbeat(Orb::Ptr<Vaultdb::Folder> folder, Orb::Ptr<const Orb::Clock> clock)
        : folder_(std::move(folder)) {
        notifierIs(std::move(clock));
        onTimeMin();
    }

  private:
    static constexpr double period = 1;

    void onTimeMin() override {
        folder_->stamp();
        timeMinIs(notifier()->now() + period);
    }

    Orb::Ptr<Vaultdb::Folder> folder_;
};

} // namespace Agent
