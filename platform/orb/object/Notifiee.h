#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/orb/object/AttributeDescription.h"
#include "platform/orb/object/NotifiedKey.h"
#include "platform/orb/object/Ptr.h"
#include "platform/orb/object/PtrInterface.h"

namespace Orb {

class Entity;

/// A reactor: told of every change of the one entity that it watches, its notifier, which it keeps
/// alive. Reactors of an entity form an intrusive list in the order in which they came; attaching
/// and detaching cost O(1) and are allowed at any time, from inside any callback:
///  - a reactor that comes during a notification is not called for that change;
///  - one that goes is never called again.
/// A reactor that is not notification active or that is marked for deletion hears nothing.
///
/// An input reactor hears of changes between decisions only, see Decision.h: each of its callbacks
/// is a decision of its own.
class Notifiee : public PtrInterface {
  public:
    ~Notifiee() override;

    const Entity* watched() const { return notifier_.get(); }

    /// Narrows what the reactor hears to one attribute, so that changes of the others cost nothing.
    void interestIs(AttributeId attribute) { interest_ = static_cast<std::uint16_t>(attribute); }

    /// Whether it is the only reactor of its notifier that hears of the attribute.
    bool hearsAlone(AttributeId attribute) const;

    /// A change of the attribute `id` of the notifier; `key` points to the key of the member that
    /// changed where the attribute is a collection, otherwise it is null.
    virtual void onAttribute(AttributeId id, const void* key) = 0;

    /// To an input reactor: a change waits for the end of a decision. By then the state may have
    /// changed again, so what it was at this moment is to be noted, if it matters. Nothing may be
    /// written.
    virtual void onRemembered(AttributeId, const void*) {}

  protected:
    /// Leaves the present notifier and joins the new one, which may be null.
    void attach(Ptr<const Entity> notifier);

    /// The object on whose behalf this reactor listens: it is kept alive during a callback, with
    /// all that it is a part of, and once one of these is marked for deletion the reactor hears
    /// nothing more.
    virtual const PtrInterface& keeper() const { return *this; }

    void becomeInputReactor() { input_ = true; }

  private:
    friend class Entity;
    class Marker;

    static constexpr std::uint16_t anyAttribute = 0;

    bool isInterestedIn(AttributeId id) const {
        return hasNotificationActive() && (interest_ == anyAttribute || interest_ == id);
    }
    void deliver(AttributeId id, const NotifiedKey& key);
    void remember(AttributeId id, const NotifiedKey& key);
    bool isGoing() const;
    void call(AttributeId id, const NotifiedKey& key);
    void unlink();
    void linkBefore(Notifiee& next);

    bool input_ : 1 = false;
    bool remembered_ : 1 = false; // something waits for the end of a decision
    std::uint16_t interest_ = anyAttribute;
    Notifiee* previous_ = nullptr;
    Notifiee* next_ = nullptr;
    Ptr<const Entity> notifier_;
};

/// The reactor base of one entity type, known to its users as T::NotifieeConst.
template <typename T>
class NotifieeOf : public Notifiee {
  public:
    const T* notifier() const { return static_cast<const T*>(watched()); }

    /// Re-points the reactor, to nothing with null.
    virtual void notifierIs(Ptr<const T> notifier) { attach(std::move(notifier)); }
};

namespace Detail {

/// The key of the notification that is being delivered on this thread.
inline constinit thread_local NotifiedKey presentKey;

[[noreturn]] void throwKeyType(const void* key);

} // namespace Detail

/// Reads the key of a collection's notification. Throws KeyTypeError where there is none, because
/// the attribute is no collection, and where it is of another type.
template <typename Key>
const Key& keyAs(const void* key) {
    const NotifiedKey& present = Detail::presentKey;
    if (key == nullptr || (key == present.get() && present.type() != NotifiedKey::typeOf<Key>())) {
        Detail::throwKeyType(key);
    }
    return *static_cast<const Key*>(key);
}

} // namespace Orb
