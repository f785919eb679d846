#include "platform/orb/object/Notifiee.h"

#include <utility>

#include "platform/orb/object/Decision.h"
#include "platform/orb/object/Entity.h"
#include "platform/orb/value/Error.h"
#include "platform/orb/value/FirstError.h"

namespace Orb {

/// Marks a position in an entity's list for as long as a notification runs, so that reactors may
/// come and go around it. It is not active, so it is never called.
class Notifiee::Marker final : public Notifiee {
  public:
    void onAttribute(AttributeId, const void*) override {}
};

Notifiee::~Notifiee() {
    if (remembered_) {
        Detail::Turn::current().forget(this);
    }
    unlink();
}

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

bool Notifiee::hearsAlone(AttributeId attribute) const {
    for (const Notifiee* other = next_; other != nullptr && other != this; other = other->next_) {
        if (other->isInterestedIn(attribute)) {
            return false;
        }
    }
    return true;
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

void Detail::throwKeyType(const void* key) {
    throw KeyTypeError(key == nullptr ? "a reactor asked for the key of an attribute that has none"
                                      : "a reactor took a key for one of another type");
}

namespace {

/// What keyAs() checks its type against, for as long as a reactor is called.
class PresentKey {
  public:
    explicit PresentKey(const NotifiedKey& key) : outer_(std::exchange(Detail::presentKey, key)) {}
    PresentKey(const PresentKey&) = delete;
    PresentKey& operator=(const PresentKey&) = delete;
    ~PresentKey() { Detail::presentKey = outer_; }

  private:
    const NotifiedKey outer_;
};

/// Calls with a reference held on the object and on all that it is a part of, unless one of these
/// is marked for deletion.
template <typename Call>
void keeping(const PtrInterface& object, const Call& call) {
    if (object.orbMarkedForDeletion()) {
        return;
    }
    const Ptr<const PtrInterface> keep(&object);
    if (const PtrInterface* whole = object.orbWhole()) {
        keeping(*whole, call);
    } else {
        call();
    }
}

/// An error of somebody who is told is not one of the decision that tells.
template <typename Tell>
void tell(const Tell& tellIt) {
    Detail::Turn& turn = Detail::Turn::current();
    if (!turn.underWay()) {
        tellIt();
        return;
    }
    try {
        tellIt();
    } catch (...) {
        turn.keep(std::current_exception());
    }
}

} // namespace

bool Notifiee::isGoing() const {
    bool going = !hasNotificationActive() || orbMarkedForDeletion();
    for (const PtrInterface* object = &keeper(); object != nullptr; object = object->orbWhole()) {
        going = going || object->orbMarkedForDeletion();
    }
    return going;
}

void Notifiee::call(AttributeId id, const NotifiedKey& key) {
    if (hasNotificationActive() && !orbMarkedForDeletion()) {
        keeping(keeper(), [&] {
            const PresentKey present(key);
            onAttribute(id, key.get());
        });
    }
}

void Notifiee::deliver(AttributeId id, const NotifiedKey& key) {
    if (!input_) {
        call(id, key);
    } else if (decisionUnderWay()) {
        remember(id, key);
    } else {
        decide([&] { call(id, key); });
    }
}

// A reactor that is re-pointed meanwhile has caught up with the new object.
void Notifiee::remember(AttributeId id, const NotifiedKey& key) {
    if (isGoing()) {
        return;
    }
    {
        const PresentKey present(key);
        onRemembered(id, key.get());
    }
    remembered_ = true;
    Detail::Turn::current().remember(this, [this, id, of = notifier_, key, copy = key.copy()] {
        if (notifier_ == of) {
            call(id, key.copiedTo(copy.get()));
        }
    });
}

void Entity::deliver(AttributeId id, const NotifiedKey& key) const {
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
        const Detail::Turn::Telling telling;
        const Ptr<const Entity> keep(this);
        tell([&] { first->deliver(id, key); });
    }
}

// The walk's position is a marker in the list itself: whatever goes or comes, the marker's
// neighbours are right. A second marker closes the list as it was when the change happened.
void Entity::deliverToAll(AttributeId id, const NotifiedKey& key) const {
    const Detail::Turn::Telling telling;
    FirstError errors;
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
            errors.attempt([&] { reactor.deliver(id, key); });
        }
    }
    tell([&] { errors.raise(); });
}

} // namespace Orb
