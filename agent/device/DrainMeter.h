#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <utility>

#include "directnet/root/RootSm.h"
#include "platform/orb/loop/Clock.h"
#include "platform/orb/object/Notifiee.h"

namespace Agent {

/// Counts the drains of all VRFs, those that have gone included, and keeps how long the longest
/// took. A drain begins as its machine counts it, and ends as the machine notes where it stopped or
/// that nothing is left; one that does neither, since all that is left waits for room, is over with
/// the turn of the event loop.
///
/// One agent thread, no locks. The root and the clock must outlive it.
class DrainMeter {
  public:
    using RootSm = Routing::DirectNet::RootSm;

    DrainMeter(const RootSm& root, const Orb::Clock& clock);
    DrainMeter(const DrainMeter&) = delete;
    DrainMeter& operator=(const DrainMeter&) = delete;
    ~DrainMeter();

    /// The event loop has made a turn.
    void turned() { ended(); }

    std::uint64_t drains() const { return drains_; }
    double longest() const { return longest_; } ///< seconds

  private:
    using IntfBacklog = Routing::DirectNet::IntfBacklog;
    using IntfBacklogSm = Routing::DirectNet::IntfBacklogSm;

    /// Hears of one attribute: a machine tells of each route, too, and that would cost as much.
    template <typename Watched>
    class Reactor : public Orb::NotifieeOf<Watched> {
      public:
        using Handler = std::function<void(const void* key)>;

        Reactor(const Watched& watched, Orb::AttributeId attribute, Handler handler)
            : handler_(std::move(handler)) {
            this->hasNotificationActiveIs(true);
            this->interestIs(attribute);
            this->notifierIs(Orb::Ptr<const Watched>(&watched));
        }
        void onAttribute(Orb::AttributeId, const void* key) override { handler_(key); }

      private:
        Handler handler_;
    };
    struct Followed {
        Orb::Ptr<Reactor<IntfBacklogSm>> begin;
        Orb::Ptr<Reactor<IntfBacklogSm>> pause;
        Orb::Ptr<Reactor<IntfBacklog>> end;
    };

    void follow(const L3::VrfName& vrf);
    static void leave(Followed& followed);
    void began();
    void ended();

    const RootSm& root_;
    const Orb::Clock& clock_;
    std::map<L3::VrfName, Followed> followed_;
    Orb::Ptr<Reactor<RootSm>> rootReactor_;
    std::uint64_t drains_ = 0;
    double longest_ = 0;
    std::optional<double> began_; // of the drain that goes on
};

} // namespace Agent
