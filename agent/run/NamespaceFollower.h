#pragma once

#include <functional>
#include <optional>
#include <set>
#include <string>

#include "agent/base/Watcher.h"
#include "agent/linux/NamespaceMonitor.h"
#include "agent/run/VrfOption.h"

namespace Agent {

/// Follows the links and addresses of one network namespace in the event loop. Where the system
/// refuses, it says so and tries again, less and less often.
class NamespaceFollower {
  public:
    using OnChange = std::function<void(NamespaceFollower&)>;
    using OnFailure = std::function<void(const std::string& why)>;

    struct Options {
        VrfOption vrf;
        bool vrfDevices = true; ///< see Linux::NamespaceView
    };

    /// Begins at once. Tells when something may have changed, first once all is known. Each cause
    /// of failure is told once, and again after all was well.
    NamespaceFollower(Options options, Orb::Ptr<Orb::Clock> clock, OnChange onChange,
                      OnFailure onFailure);

    const VrfOption& vrf() const { return options_.vrf; }

    /// Whether everything has been known, and told.
    bool isLearned() const { return learned_; }
    /// What the kernel has, once it has been learned.
    Linux::NamespaceView& view() { return monitor_->view(); }
    const Linux::NamespaceView& view() const { return monitor_->view(); }
    /// Whether nothing is known to be outstanding.
    bool isSettled() const { return learned_ && monitor_->isSettled(); }
    Linux::NamespaceMonitor::Counts counts() const {
        return monitor_ ? monitor_->counts() : Linux::NamespaceMonitor::Counts();
    }
    /// Why the namespace cannot be followed at present; empty while all is well.
    const std::string& failure() const { return failure_; }

    /// The merge patch that takes back all patches of the view.
    DevicePatch withdraw();

  private:
    class Retry : public Orb::Clock::NotifieeConst {
      public:
        explicit Retry(NamespaceFollower& owner) : owner_(owner) {}
        void onTimeMin() override { owner_.open(); }

      private:
        NamespaceFollower& owner_;
    };

    void open();
    void advance();
    void failureIs(std::string failure);

    Options options_;
    Orb::Ptr<Orb::Clock> clock_;
    OnChange onChange_;
    OnFailure onFailure_;
    std::optional<Linux::NamespaceMonitor> monitor_; // none until the namespace could be opened
    std::optional<Watcher> watcher_;
    bool learned_ = false;
    std::string failure_;
    std::set<std::string> told_;
    double pause_;
    Retry retry_;
};

} // namespace Agent
