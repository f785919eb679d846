#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "platform/orb/attribute/Children.h"

namespace Orb {

/// The message ends in a double quote, which belongs to it.
[[noreturn]] void throwNullArgument(std::string_view attribute, std::string_view type);

/// Objects made elsewhere, kept by the key that each knows itself.
template <typename T>
class References {
  public:
    using Value = T;
    using Key = typename T::Key;
    using Map = HashMap2018<Ptr<T>, KeyOfObject>;

    const Map& all() const { return objects_; }

    /// The object, or null. Its reference count stays as it is.
    template <typename... Tag>
    T* find(const Key& key, Tag... tag) const {
        const Ptr<T>* object = objects_.find(key, tag...);
        return object == nullptr ? nullptr : object->get();
    }

    /// Keeps the object, in place of another of its key. Throws NullArgumentError.
    void memberIs(const Entity& owner, AttributeId id, std::string_view name, Ptr<T> object) {
        if (object == nullptr) {
            throwNullArgument(name, owner.fwkTypeNode()->name());
        }
        const Ptr<const PtrInterface> kept = keep(owner);
        const auto [member, added] = objects_.tryInsert(object);
        if (!added) {
            if (*member == object) {
                return;
            }
            // The old object goes last: another object's destructor may come back here.
            const Ptr<T> old = std::exchange(*member, object);
        }
        owner.notify(id, &object->fwkKey());
    }

    /// The object of that key, made by `make()` and kept if there is none.
    template <typename Make>
    Ptr<T> memberOrMade(const Entity& owner, AttributeId id, const Key& key, HashTag tag,
                        const Make& make) {
        const auto [member, added] = objects_.findOrInsert(key, tag, make);
        const Ptr<T> object = *member;
        if (added) {
            const Ptr<const PtrInterface> kept = keep(owner);
            owner.notify(id, &object->fwkKey());
        }
        return object;
    }

    template <typename... Tag>
    void memberDel(const Entity& owner, AttributeId id, const Key& key, Tag... tag) {
        if (const auto taken = objects_.take(key, tag...)) {
            const Ptr<T>& object = *taken;
            owner.notify(id, &object->fwkKey());
        }
    }

    void memberDelAll(const Entity& owner, AttributeId id) {
        const Ptr<const PtrInterface> kept = keep(owner);
        while (!objects_.empty()) {
            memberDel(owner, id, (*objects_.first())->fwkKey());
        }
    }

    std::string text() const { return std::to_string(objects_.size()) + " members"; }

  private:
    Map objects_;
};

} // namespace Orb
