#pragma once

#include "platform/orb/object/AttributeDescription.h"
#include "platform/orb/object/NotifiedKey.h"
#include "platform/orb/object/PtrInterface.h"

namespace Orb {

class Notifiee;

/// An object with named attributes that others watch through reactors. Notification is synchronous
/// and depth first: an attribute is changed first, then every reactor that was there is called, on
/// the one agent thread, before the mutator returns. A handler may change the same entity again,
/// let go of it, or throw; everybody is told all the same. Input reactors (Reactor.h) wait for the
/// end of the decision that is under way.
class Entity : public PtrInterface {
  public:
    bool hasReactors() const { return reactors_ != nullptr; }

    /// Tells every reactor that the attribute `id` changed. Called by attributes, after the change.
    void notify(AttributeId id) const {
        if (reactors_ != nullptr && hasNotificationActive()) {
            deliver(id, NotifiedKey());
        }
    }

    /// The same of the member of that key of a collection.
    template <typename Key>
    void notify(AttributeId id, const Key* key) const {
        if (reactors_ != nullptr && hasNotificationActive()) {
            deliver(id, NotifiedKey(key));
        }
    }

  protected:
    Entity() = default;
    ~Entity() override = default;

  private:
    friend class Notifiee;

    void deliver(AttributeId id, const NotifiedKey& key) const;
    void deliverToAll(AttributeId id, const NotifiedKey& key) const;

    // Circular list: the head's previous is the tail.
    mutable Notifiee* reactors_ = nullptr;
};

} // namespace Orb
