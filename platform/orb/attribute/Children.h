#pragma once

#include <utility>

#include "platform/orb/attribute/Child.h"
#include "platform/orb/container/HashMap2018.h"
#include "platform/orb/object/TypeNode.h"

namespace Orb {

/// Finds the key of an object that knows its own.
struct KeyOfObject {
    template <typename T>
    decltype(auto) operator()(const Ptr<T>& object) const {
        return object->fwkKey();
    }
};

/// Children that their parent keeps by the key that each was made with.
template <typename T>
class Children {
  public:
    using Value = T;
    using Key = typename T::Key;
    using Map = HashMap2018<Ptr<T>, KeyOfObject>;

    Children() = default;
    Children(const Children&) = delete;
    Children& operator=(const Children&) = delete;
    ~Children() {
        while (!children_.empty()) {
            releaseChild(take((*children_.first())->fwkKey()));
        }
    }

    const Map& all() const { return children_; }

    /// The child, or null. Its reference count stays as it is.
    T* find(const Key& key) const {
        const Ptr<T>* child = children_.find(key);
        return child == nullptr ? nullptr : child->get();
    }

    /// The child of the arguments' key, made if there is none; null if whoever was told of it let
    /// go of it. Throws NameInUseError when there is one that was made from other arguments.
    T* childIs(const Entity& owner, AttributeId id, typename T::Arguments arguments) {
        if (T* present = find(T::fwkKey(arguments))) {
            checkReinstantiation(arguments, present->arguments());
            return present;
        }
        const Ptr<const PtrInterface> kept = keep(owner);
        const Ptr<T> made = makePtr<T>(std::move(arguments));
        const Key key = made->fwkKey();
        if (children_.tryInsert(made).second) {
            owner.notify(id, &key);
        }
        return kept != nullptr && kept->references() == 1 ? nullptr : find(key);
    }

    void childDel(const Entity& owner, AttributeId id, const Key& key) {
        const Ptr<const PtrInterface> kept = keep(owner);
        const Key stable = key; // the caller's may be the child's own
        if (Ptr<T> child = take(stable)) {
            releaseChild(std::move(child));
            owner.notify(id, &stable);
        }
    }

    void childDelAll(const Entity& owner, AttributeId id) {
        const Ptr<const PtrInterface> kept = keep(owner);
        while (!children_.empty()) {
            childDel(owner, id, (*children_.first())->fwkKey());
        }
    }

    std::string text() const { return std::to_string(children_.size()) + " members"; }

  private:
    Ptr<T> take(const Key& key) { return children_.take(key).value_or(nullptr); }

    Map children_;
};

} // namespace Orb
