#pragma once

#include <memory>
#include <utility>

#include "directnet/backlog/IntfBacklog.h"
#include "platform/memtab/Table.h"
#include "platform/orb/object/Reactor.h"

namespace Routing::DirectNet {

/// What a machine waits with for room in a table that was full; one word while it does not. The VRF
/// counts it among those that wait. When there may be room the machine's handleRoom() is called.
template <typename Owner>
class RoomWaiter {
  public:
    void await(Owner& owner, const Orb::Ptr<const OrbMemtab::Table>& table,
               const Orb::Ptr<IntfBacklog>& vrf) {
        if (!waits()) {
            reactor_ = std::make_unique<Reactor>(owner, *this, table, vrf);
        }
        table->awaitRoom();
    }

    bool waits() const { return reactor_ != nullptr; }

  private:
    class Reactor : public Orb::InputReactor<Owner, OrbMemtab::Table> {
      public:
        Reactor(Owner& owner, RoomWaiter& waiter, const Orb::Ptr<const OrbMemtab::Table>& table,
                Orb::Ptr<IntfBacklog> vrf)
            : Orb::InputReactor<Owner, OrbMemtab::Table>(&owner, OrbMemtab::Table::roomId),
              waiter_(waiter), vrf_(std::move(vrf)) {
            this->notifierIs(table);
            vrf_->waitForRoom();
        }
        ~Reactor() override { vrf_->endWaitForRoom(); }

        void onAttribute(Orb::AttributeId, const void*) override {
            Owner& owner = *this->owner();
            const std::unique_ptr<Reactor> ended = std::move(waiter_.reactor_);
            owner.handleRoom();
        }

      private:
        RoomWaiter& waiter_;
        const Orb::Ptr<IntfBacklog> vrf_;
    };

    std::unique_ptr<Reactor> reactor_;
};

} // namespace Routing::DirectNet
