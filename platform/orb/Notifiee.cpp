#include "platform/orb/Notifiee.h"

#include <utility>

#include "platform/orb/Entity.h"

namespace Orb {

/// Marks a position in an entity's list for as long as a notification runs, so that reactors may
/// come and go around it. It is never called.
class Notifiee::Marker final : public Notifiee {
  public:
    Marker() { marker_ = true; }
    void onAttribute(AttributeId, const void*) override {}
};

Notifiee::~Notifiee() { unlink(); }

void Notifiee::attach(Ptr<const Entity> notifier) {
    unlink();
    notifier_ = std::move(notifier);
    if (notifier_ == nullptr) {
        return;
    }
    Notifiee*& head = notifier_->reactors_;
    if (head == nullptr) {
        head = previous_ = next_ = this;
    } else {
        linkBefore(*head);
    }
}

void Notifiee::linkBefore(Notifiee& next) {
    next_ = &next;
    previous_ = next.previous_;
    previous_->next_ = this;
    next.previous_ = this;
}

void Notifiee::unlink() {
    if (notifier_ == nullptr || next_ == nullptr) {
        return;
    }
    Notifiee*& head = notifier_->reactors_;
    if (next_ == this) {
        head = nullptr;
    } else {
        previous_->next_ = next_;
        next_->previous_ = previous_;
        if (head == this) {
            head = next_;
        }
    }
    previous_ = next_ = nullptr;
}

void Notifiee::deliver(AttributeId id, const void* key) {
    const PtrInterface& held = keeper();
    if (!hasNotificationActive() || orbMarkedForDeletion() || held.orbMarkedForDeletion()) {
        return;
    }
    const Ptr<const PtrInterface> keep(&held);
    onAttribute(id, key);
}

void Entity::deliver(AttributeId id, const void* key) const {
    Notifiee* first = nullptr;
    Notifiee* reactor = reactors_;
    do {
        if (reactor->isInterestedIn(id)) {
            if (first != nullptr) {
                deliverToAll(id, key);
                return;
            }
            first = reactor;
        }
        reactor = reactor->next_;
    } while (reactor != reactors_);
    if (first != nullptr) {
        const Ptr<const Entity> keep(this);
        first->deliver(id, key);
    }
}

// The walk's position is a marker in the list itself: whatever goes or comes, the marker's
// neighbours are right. A second marker closes the list as it was when the change happened.
void Entity::deliverToAll(AttributeId id, const void* key) const {
    Notifiee::Marker end;
    end.attach(Ptr<const Entity>(this));
    Notifiee::Marker position;
    position.attach(Ptr<const Entity>(this));
    reactors_ = &position; // a circle has no ends: behind the tail is before the head
    while (position.next_ != &end) {
        Notifiee& reactor = *position.next_;
        position.unlink();
        position.linkBefore(*reactor.next_);
        if (reactor.isInterestedIn(id)) {
            reactor.deliver(id, key);
        }
    }
}

} // namespace Orb
