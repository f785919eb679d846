#pragma once

#include <utility>

#include "platform/orb/object/Notifiee.h"

namespace Orb {

/// A nested reactor: a member of `Owner` that watches a `Watched` for it. It listens from
/// construction until it is destroyed, re-pointed to null, or its owner marked for deletion.
template <typename OwnerType, typename WatchedType>
class Reactor : public NotifieeOf<WatchedType> {
  public:
    using Owner = OwnerType;
    using Watched = WatchedType;

    explicit Reactor(Owner* owner) : owner_(owner) { this->hasNotificationActiveIs(true); }
    /// A reactor that hears of one attribute only.
    Reactor(Owner* owner, AttributeId interest) : Reactor(owner) { this->interestIs(interest); }

    Owner* owner() const { return owner_; }

  protected:
    const PtrInterface& keeper() const override { return *owner_; }

  private:
    Owner* owner_;
};

/// A nested reactor that watches an input of its machine: something that strangers change whenever
/// they like. It hears of that between decisions only, see Decision.h.
template <typename OwnerType, typename WatchedType>
class InputReactor : public Reactor<OwnerType, WatchedType> {
  public:
    explicit InputReactor(OwnerType* owner) : Reactor<OwnerType, WatchedType>(owner) {
        this->becomeInputReactor();
    }
    InputReactor(OwnerType* owner, AttributeId interest) : InputReactor(owner) {
        this->interestIs(interest);
    }
};

/// A reactor that is itself a child of `Owner`, one of a collection that mirrors a collection of
/// `Watched` members and is keyed by the member's key.
template <typename OwnerType, typename WatchedType>
class MemberReactor : public NotifieeOf<WatchedType> {
  public:
    using Owner = OwnerType;
    using Watched = WatchedType;

    explicit MemberReactor(Owner* owner) : owner_(owner) {}

    Owner* owner() const { return owner_; }
    decltype(auto) fwkKey() const { return this->notifier()->fwkKey(); }

    /// Runs once the owner's collection holds the reactor.
    void handleInitialized() {}

    const PtrInterface* orbWhole() const override { return owner_; }

  private:
    Owner* owner_;
};

/// A member reactor that watches an input of its machine, as InputReactor does.
template <typename OwnerType, typename WatchedType>
class InputMemberReactor : public MemberReactor<OwnerType, WatchedType> {
  public:
    explicit InputMemberReactor(OwnerType* owner) : MemberReactor<OwnerType, WatchedType>(owner) {
        this->becomeInputReactor();
    }
};

} // namespace Orb
