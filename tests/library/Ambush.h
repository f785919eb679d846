#pragma once

#include <functional>
#include <vector>

#include "tests/support/LibraryHarness.h"
#include "tests/support/Outsider.h"

namespace Routing::DirectNet {

/// Somebody who waits for a change of what the library writes, and then acts in the middle of it:
/// routes, vias, via sets, readiness, virtual addresses and the backlogs of all VRFs.
class Ambush {
  public:
    using Act = std::function<void()>;

    explicit Ambush(LibraryHarness& harness) : harness_(harness) {}

    /// Acts at the `nth` change from now, once. The root must stay.
    void lay(int nth, Act act) {
        left_ = nth;
        act_ = std::move(act);
        const RootSm& root = harness_.root();
        watch(root.ipv4AllVrfRouteConfig());
        watch(root.ipv6AllVrfRouteConfig());
        watch(root.ipv4AllVrfViaConfig());
        watch(root.ipv6AllVrfViaConfig());
        watch(harness_.viaSetConfig->viaSetCollection());
        watch(root.allVrfReadyStatus());
        watch(harness_.protoStatusDir);
        watch(root.intfBacklogByVrf());
        for (const auto& backlog : root.intfBacklogByVrf()->intfBacklog()) {
            watch(backlog);
        }
    }

    void liftIt() {
        act_ = nullptr;
        outsiders_.clear();
    }

  private:
    void watch(const Orb::Ptr<Orb::Entity>& entity) {
        outsiders_.push_back(
            Orb::makePtr<Outsider>(entity, [this](Orb::AttributeId) { handleChange(); }));
    }

    void handleChange() {
        if (act_ != nullptr && --left_ == 0) {
            const Act act = std::exchange(act_, nullptr);
            act();
        }
    }

    LibraryHarness& harness_;
    int left_ = 0;
    Act act_;
    std::vector<Orb::Ptr<Outsider>> outsiders_;
};

} // namespace Routing::DirectNet
