#pragma once

#include <functional>
#include <optional>
#include <set>
#include <string>

#include "agent/base/Watcher.h"
#include "agent/linux/NamespaceMonitor.h"
#include "agent/run/VrfOption.h"

namespace Agent {

/// Follows the links and addresses of one VRF's namespace in the event loop and hands on what has
/// changed as merge patches. Where the system refuses, it says so and tries again, less and less
/// often.
class NamespaceFollower {
  public:
    using OnPatch = std::function<void(NamespaceFollower&, DevicePatch patch)>;
    using OnFailure = std::function<void(const std::string& why)>;

    /// Begins at once. A patch is handed on whenever something has changed; the first one, perhaps
    /// empty, once all is known. Each cause of failure is told once, and again after all was well.
    NamespaceFollower(VrfOption vrf, Orb::Ptr<Orb::Clock> clock, OnPatch onPatch,
                      OnFailure onFailure);

    const VrfOption& vrf() const { return vrf_; }

    /// Whether the first patch has been handed on.
    bool isLearned() const { return learned_; }
    /// Whether nothing is known to be outstanding.
    bool isSettled() const { return learned_ && monitor_->isSettled(); }
    /// Why the namespace cannot be followed at present; empty while all is well.
    const std::string& failure() const { return failure_; }

    /// The merge patch that takes back what was handed on.
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

    VrfOption vrf_;
    Orb::Ptr<Orb::Clock> clock_;
    OnPatch onPatch_;
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
