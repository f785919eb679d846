#pragma once

#include <functional>
#include <map>

#include "directnet/backlog/IntfBacklogByVrf.h"
#include "platform/routing/RouteKey.h"

namespace Agent {

/// Tells of each prefix whose contributors have changed, once its route has been decided anew:
/// that route may be the same as before, though an interface's own address now stands beside a
/// virtual one.
class ContributorWatch {
  public:
    using Listener = std::function<void(const Routing::Rib::RouteKey& key)>;

    ContributorWatch(Orb::Ptr<const Routing::DirectNet::IntfBacklogByVrf> backlogs,
                     Listener listener);
    ContributorWatch(const ContributorWatch&) = delete;
    ContributorWatch& operator=(const ContributorWatch&) = delete;
    ~ContributorWatch();

  private:
    using Backlogs = Routing::DirectNet::IntfBacklogByVrf;
    using Backlog = Routing::DirectNet::IntfBacklog;
    using VrfId = Vrf::VrfIdMap::VrfId;

    class VrfReactor : public Backlog::NotifieeConst {
      public:
        VrfReactor(ContributorWatch& owner, Orb::Ptr<const Backlog> backlog);
        void onAttribute(Orb::AttributeId id, const void* key) override;

      private:
        ContributorWatch& owner_;
    };
    class Reactor : public Backlogs::NotifieeConst {
      public:
        Reactor(ContributorWatch& owner, Orb::Ptr<const Backlogs> backlogs);
        void onAttribute(Orb::AttributeId id, const void* key) override;

      private:
        ContributorWatch& owner_;
    };

    void handleVrf(VrfId id);

    Listener listener_;
    std::map<VrfId, Orb::Ptr<VrfReactor>> vrfs_;
    Orb::Ptr<Reactor> reactor_;
};

} // namespace Agent
