#pragma once

#include <memory>
#include <utility>

#include "directnet/backlog/IntfBacklog.h"
#include "platform/memtab/Table.h"
#include "platform/orb/object/Reactor.h"

namespace Routing::DirectNet {

/// A machine's wait for room in a full table. While it waits, it is counted in the VRF's backlog.
/// When a member of the table has gone, the wait ends and the machine's handleRoom() is called.
/// Without a wait it costs one pointer.
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
            : Orb::InputReactor<Owner, OrbMemtab::Table>(&owner, OrbMemtab::Table::roomAttribute),
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
