#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

#include "platform/orb/Entity.h"
#include "platform/orb/Reactor.h"

namespace OrbMemtab {

/// An entity whose collections are bounded by what its writer declares when it mounts it.
class Table : public Orb::Entity {
  public:
    /// Notified when a member has gone for whose going somebody waits.
    static constexpr Orb::AttributeId roomId = Orb::lastAttributeId;

    /// Bounds the collection; members beyond that are refused with RangeError. A collection that
    /// the table does not have is a RangeError too.
    virtual void collectionCapacityIs(std::string_view collection, std::size_t capacity) = 0;

    /// Asks for one notification of roomId, to all that wait.
    void awaitRoom() const { awaited_ = true; }

  protected:
    void noteRoom() {
        if (awaited_) {
            awaited_ = false;
            notify(roomId);
        }
    }

  private:
    mutable bool awaited_ = false;
};

/// What a machine waits with for room in a table; one word while it does not. When there may be
/// room the machine's handleRoom() is called, once.
template <typename Owner>
class RoomWaiter {
  public:
    void await(Owner& owner, const Orb::Ptr<const Table>& table) {
        if (reactor_ == nullptr) {
            reactor_ = std::make_unique<Reactor>(&owner);
        }
        reactor_->notifierIs(table);
        table->awaitRoom();
    }

    bool waits() const { return reactor_ != nullptr && reactor_->notifier() != nullptr; }

  private:
    class Reactor : public Orb::InputReactor<Owner, Table> {
      public:
        explicit Reactor(Owner* owner) : Orb::InputReactor<Owner, Table>(owner, Table::roomId) {}

        void onAttribute(Orb::AttributeId, const void*) override {
            this->notifierIs(nullptr);
            this->owner()->handleRoom();
        }
    };

    std::unique_ptr<Reactor> reactor_;
};

} // namespace OrbMemtab
